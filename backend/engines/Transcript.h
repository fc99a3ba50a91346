// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lorvane::backend {

// Without line ends, and with single blanks: servers put them between segments and around them.
std::string onOneLine(std::string_view text);

// The text of a speech server's answer, {"text": …}, on one line. Nothing for an answer of any other shape.
std::optional<std::string> transcriptOf(std::string_view answer);

} // namespace lorvane::backend
