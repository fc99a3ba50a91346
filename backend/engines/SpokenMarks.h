// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace lorvane::backend {

struct SpokenMark {
    std::string_view first;
    std::string_view second; // empty for a mark of one word
    std::string_view written;
};

// The mark that the words begin with, the longer one first; nothing when there is none.
const SpokenMark* spokenMark(std::span<const std::string> words);

// Whether one more word could make a mark of this one.
bool mayBeginMark(std::string_view word);

// "a period", "the comma", "another new line": after such a word a mark's name is a word like any other.
bool namesWhatFollows(std::string_view word);

// Articles, prepositions, conjunctions and their like: no pause after them is the end of anything.
bool leansOnNext(std::string_view word);

bool isFiller(std::string_view word);

// Words that nobody says twice on purpose. "Very very", "had had" and digits stay as they are said.
bool isStutterable(std::string_view word);

// "I", names of days and months that are nothing else, languages; an empty view for every other word.
std::string_view properForm(std::string_view word);

} // namespace lorvane::backend
