// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <map>
#include <string>
#include <vector>

namespace lorvane::backend {

// What can be counted in somebody's messages.
struct SpeechFigures {
    std::size_t messages = 0; // those with words
    std::size_t sentences = 0;
    std::size_t words = 0;
    std::size_t longestSentence = 0; // words
    std::size_t doubled = 0;         // words said twice in a row
    std::size_t fillers = 0;
    std::map<std::string, std::size_t> fillerCounts;
    std::map<std::string, std::size_t> openings; // first words of sentences
    std::map<std::string, std::size_t> contentWords;

    double wordsPerSentence() const { return per(words, sentences); }
    double fillersPerHundred() const { return 100 * per(fillers, words); }
    double doubledPerHundred() const { return 100 * per(doubled, words); }

    static double per(std::size_t part, std::size_t whole) {
        return whole == 0 ? 0 : static_cast<double>(part) / static_cast<double>(whole);
    }
};

using Count = std::pair<std::string, std::size_t>;
// The one that comes most often; of equal ones the first by its letters.
Count mostOften(const std::map<std::string, std::size_t>& counts);

SpeechFigures figuresOf(const std::vector<std::string>& messages);

} // namespace lorvane::backend
