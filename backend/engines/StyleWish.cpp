// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/StyleWish.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string>
#include <utility>

namespace lorvane::backend {

namespace {

constexpr auto contractions = std::to_array<std::pair<std::string_view, std::string_view>>({
    {"aren't", "are not"},     {"can't", "cannot"},      {"couldn't", "could not"},   {"didn't", "did not"},
    {"doesn't", "does not"},   {"don't", "do not"},      {"hadn't", "had not"},       {"hasn't", "has not"},
    {"haven't", "have not"},   {"i'm", "I am"},          {"i've", "I have"},          {"i'll", "I will"},
    {"isn't", "is not"},       {"it'll", "it will"},     {"shouldn't", "should not"}, {"they're", "they are"},
    {"they've", "they have"},  {"they'll", "they will"}, {"wasn't", "was not"},       {"we're", "we are"},
    {"we've", "we have"},      {"we'll", "we will"},     {"weren't", "were not"},     {"won't", "will not"},
    {"wouldn't", "would not"}, {"you're", "you are"},    {"you've", "you have"},      {"you'll", "you will"},
});

bool says(const std::string& style, std::initializer_list<std::string_view> phrases) {
    return std::any_of(phrases.begin(), phrases.end(),
                       [&](std::string_view phrase) { return style.find(phrase) != std::string::npos; });
}

} // namespace

StyleWish readStyle(std::string_view style) {
    std::string text(style);
    for (char& c : text)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    StyleWish wish;
    wish.lowerCase =
        says(text, {"lowercase", "lower case", "no capitals", "no capital letters", "small letters"});
    wish.noMarks = says(text, {"no punctuation", "without punctuation"});
    wish.noLastStop = says(text, {"no full stop", "no period", "no final period", "without a period",
                                  "without a full stop", "casual", "chat"});
    wish.numbersAsWords =
        says(text, {"numbers as words", "numbers in words", "spell out numbers", "no figures"});
    const bool informal = says(text, {"informal", "not formal", "less formal"});
    wish.noContractions =
        says(text, {"no contractions", "without contractions"}) || (!informal && says(text, {"formal"}));
    return wish;
}

std::string_view spelledOut(std::string_view word) {
    const auto* found = std::find_if(contractions.begin(), contractions.end(),
                                     [&](const auto& entry) { return entry.first == word; });
    return found == contractions.end() ? std::string_view() : found->second;
}

} // namespace lorvane::backend
