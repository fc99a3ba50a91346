// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session/EngineInPreferences.h"

#include "base/DesktopPreferences.h"

namespace lorvane {

EngineMemory engineInPreferences(Preferences& preferences) {
    return {[&preferences] { return preferences.get(preference::usersInputMethod); },
            [&preferences](const QString& engine) { preferences.set(preference::usersInputMethod, engine); }};
}

} // namespace lorvane
