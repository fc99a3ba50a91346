// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/SpokenMarks.h"

#include <algorithm>
#include <array>
#include <utility>

namespace lorvane::backend {

namespace {

constexpr std::array marks = std::to_array<SpokenMark>({
    {"full", "stop", "."},
    {"question", "mark", "?"},
    {"exclamation", "mark", "!"},
    {"exclamation", "point", "!"},
    {"period", "", "."},
    {"comma", "", ","},
    {"colon", "", ":"},
    {"semi", "colon", ";"},
    {"semicolon", "", ";"},
    {"new", "line", "\n"},
    {"newline", "", "\n"},
    {"new", "paragraph", "\n\n"},
});

// Only words that cannot end a sentence: "do that period" is more likely a mark.
constexpr auto determiners = std::to_array<std::string_view>(
    {"a", "an", "the", "each", "every", "my", "your", "our", "their", "another"});

constexpr auto leaning = std::to_array<std::string_view>(
    {"a",     "about",  "although", "an",    "and",  "are",     "as",    "at",    "because", "but",
     "by",    "can",    "could",    "every", "for",  "from",    "had",   "has",   "have",    "he",
     "her",   "his",    "i",        "i'm",   "if",   "in",      "into",  "is",    "its",     "just",
     "like",  "may",    "might",    "my",    "nor",  "of",      "on",    "or",    "our",     "shall",
     "she",   "should", "since",    "so",    "than", "that",    "the",   "their", "they",    "this",
     "to",    "unless", "until",    "very",  "was",  "we",      "were",  "when",  "where",   "whether",
     "which", "while",  "who",      "will",  "with", "without", "would", "your"});

constexpr auto fillers =
    std::to_array<std::string_view>({"uh", "uhh", "um", "umm", "er", "erm", "hmm", "mm"});

constexpr auto stutterable = std::to_array<std::string_view>(
    {"a",    "an",   "and", "as",    "at",  "but",  "by",   "for",  "from", "he",   "i",
     "if",   "in",   "is",  "it",    "my",  "of",   "on",   "or",   "our",  "she",  "so",
     "the",  "they", "to",  "this",  "was", "we",   "were", "with", "you",  "your", "i'm",
     "it's", "be",   "are", "their", "his", "what", "when", "where"});

constexpr auto properForms = std::to_array<std::pair<std::string_view, std::string_view>>({
    {"i", "I"},
    {"i'd", "I'd"},
    {"i'll", "I'll"},
    {"i'm", "I'm"},
    {"i've", "I've"},
    {"monday", "Monday"},
    {"tuesday", "Tuesday"},
    {"wednesday", "Wednesday"},
    {"thursday", "Thursday"},
    {"friday", "Friday"},
    {"saturday", "Saturday"},
    {"sunday", "Sunday"},
    {"january", "January"},
    {"february", "February"},
    {"april", "April"},
    {"june", "June"},
    {"july", "July"},
    {"september", "September"},
    {"october", "October"},
    {"november", "November"},
    {"december", "December"},
    {"english", "English"},
    {"german", "German"},
    {"french", "French"},
    {"spanish", "Spanish"},
    {"russian", "Russian"},
});

template <typename Table>
bool holds(const Table& table, std::string_view word) {
    return std::find(table.begin(), table.end(), word) != table.end();
}

} // namespace

const SpokenMark* spokenMark(std::span<const std::string> words) {
    if (words.empty())
        return nullptr;
    const auto found = std::find_if(marks.begin(), marks.end(), [&](const SpokenMark& mark) {
        if (mark.first != words[0])
            return false;
        return mark.second.empty() || (words.size() > 1 && mark.second == words[1]);
    });
    return found == marks.end() ? nullptr : &*found;
}

bool mayBeginMark(std::string_view word) {
    return std::any_of(marks.begin(), marks.end(),
                       [&](const SpokenMark& mark) { return mark.first == word && !mark.second.empty(); });
}

bool namesWhatFollows(std::string_view word) { return holds(determiners, word); }
bool leansOnNext(std::string_view word) { return holds(leaning, word); }
bool isFiller(std::string_view word) { return holds(fillers, word); }
bool isStutterable(std::string_view word) { return holds(stutterable, word); }

std::string_view properForm(std::string_view word) {
    const auto found = std::find_if(properForms.begin(), properForms.end(),
                                    [&](const auto& entry) { return entry.first == word; });
    return found == properForms.end() ? std::string_view() : found->second;
}

} // namespace lorvane::backend
