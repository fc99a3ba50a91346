// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>

namespace lorvane::backend {

// Whether a text that is shown to a stranger may be somebody's name and can be nothing else: letters of any
// script, blanks, hyphens, apostrophes, and full stops that end a word, in six words at most. No link, no
// number, no sign that turns the writing round.
bool looksLikeAName(std::string_view text);

} // namespace lorvane::backend
