// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>

namespace lorvane::backend {

// One line to the standard error stream, with the time in UTC before it; control characters become blanks, so
// that no input can forge a line. Any thread. Tokens and dictated text never come here.
void logLine(std::string_view text);

} // namespace lorvane::backend
