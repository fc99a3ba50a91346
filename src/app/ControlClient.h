// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/CommandLine.h"

namespace lorvane {

/// Hands a command to the running program over the session bus and prints its answer to standard output. The
/// exit status: 0 done, 1 no program runs or it did not answer (told on standard error).
[[nodiscard]] int sendCommand(const Command& command);

} // namespace lorvane
