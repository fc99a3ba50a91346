// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>

namespace lorvane::backend {

// What rules can do of a style that somebody describes in words of their own ("casual, all lowercase").
struct StyleWish {
    bool lowerCase = false;
    bool noMarks = false;    // line ends stay
    bool noLastStop = false; // none at the end of the text
    bool numbersAsWords = false;
    bool noContractions = false; // "do not" for "don't"
};

// English words; a style that says nothing of these asks for nothing.
StyleWish readStyle(std::string_view style);

// "do not" for "don't"; empty for a word that is no contraction, or one of two readings ("he's").
std::string_view spelledOut(std::string_view word);

} // namespace lorvane::backend
