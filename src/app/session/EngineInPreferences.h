// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Preferences.h"
#include "platform/linux/ibus/IbusPoster.h"

namespace lorvane {

/// The user's engine of IBus, kept among the preferences while ours is in its place.
[[nodiscard]] EngineMemory engineInPreferences(Preferences& preferences);

} // namespace lorvane
