// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session/EngineInPreferences.h"

#include "base/PreferenceCatalogue.h"

namespace lorvane {

namespace {

const PreferenceKey<QString> usersInputMethod{
    QLatin1String("tirra.linux.usersInputMethod"), {}, QLatin1String("input method")};

} // namespace

EngineMemory engineInPreferences(Preferences& preferences) {
    return {[&preferences] { return preferences.get(usersInputMethod); },
            [&preferences](const QString& engine) { preferences.set(usersInputMethod, engine); }};
}

} // namespace lorvane
