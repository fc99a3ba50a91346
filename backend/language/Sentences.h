// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lorvane::backend {

struct Sentence {
    std::string text;               // trimmed, as it was said
    std::vector<std::string> words; // in small letters, without punctuation
};

// Cuts a text as Unicode (UAX #29) tells. Sentences without any word are left out.
std::vector<Sentence> sentencesOf(std::string_view text);

// All words, in small letters; of scripts without blanks each character is one. Also within a piece of a
// text.
std::vector<std::string> wordsIn(std::string_view text);

std::size_t wordCount(std::string_view text);

// Words that hold a sentence together and say little by themselves; English and Russian.
bool isSmallWord(std::string_view word);

} // namespace lorvane::backend
