// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace lorvane::backend {

struct SpokenNumber {
    enum class Kind {
        none,    // no number begins here
        figures, // `words` words are written as `written`
        words,   // `words` words belong together and stay as they are
        unclear, // what follows decides
    };
    Kind kind = Kind::none;
    std::size_t words = 0;
    std::string written;
};

// The English number that the words (in small letters) begin with: from ten on in figures, below only with
// what asks for them (percent, a time of day, decimals); years, times, ordinals and four or more single
// digits as they are written. What could be read in two ways ("one twenty five") stays in words. `before` is
// the word before; `last`: nothing follows the words.
SpokenNumber spokenNumber(std::span<const std::string> words, std::string_view before, bool last);

} // namespace lorvane::backend
