// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/setup/SetupDialogue.h"

namespace lorvane {

/// `lorvane setup` on this machine, at the terminal it was called from. The exit status as of
/// `runSetupDialogue`.
[[nodiscard]] int runSetup(const SetupRequest& request, bool keyDevices);

} // namespace lorvane
