// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace lorvane {

/// Runs the program until it is told to quit or gets a signal to end; the exit status. When it runs already,
/// its window is opened instead and this ends at once.
[[nodiscard]] int runProgram();

} // namespace lorvane
