// SPDX-License-Identifier: GPL-3.0-or-later
#include "language/SpeechFigures.h"

#include "language/Sentences.h"

#include <algorithm>
#include <array>

namespace lorvane::backend {

namespace {

// Only what hardly ever means anything: "like" or "so" would blame people for plain sentences.
constexpr auto fillers = std::to_array<std::string_view>(
    {"um", "uh", "er", "erm", "hmm", "basically", "literally", "you know", "i mean", "sort of", "kind of",
     "ну", "короче", "типа", "как бы", "в общем", "э"});

void countFillers(const std::vector<std::string>& words, SpeechFigures& figures) {
    for (std::size_t i = 0; i < words.size(); ++i) {
        const auto pair = i + 1 < words.size() ? words[i] + ' ' + words[i + 1] : std::string();
        for (const auto& said : {words[i], pair})
            if (std::find(fillers.begin(), fillers.end(), said) != fillers.end()) {
                ++figures.fillers;
                ++figures.fillerCounts[said];
            }
    }
}

bool isNumber(const std::string& word) {
    return std::all_of(word.begin(), word.end(), [](char c) { return c >= '0' && c <= '9'; });
}

void count(const Sentence& sentence, SpeechFigures& figures) {
    const auto& words = sentence.words;
    ++figures.sentences;
    figures.words += words.size();
    figures.longestSentence = std::max(figures.longestSentence, words.size());
    ++figures.openings[words.front()];
    countFillers(words, figures);
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (i > 0 && words[i] == words[i - 1] && !isNumber(words[i]))
            ++figures.doubled;
        if (!isSmallWord(words[i]) && !isNumber(words[i]))
            ++figures.contentWords[words[i]];
    }
}

} // namespace

Count mostOften(const std::map<std::string, std::size_t>& counts) {
    const auto most = std::max_element(counts.begin(), counts.end(),
                                       [](const auto& a, const auto& b) { return a.second < b.second; });
    return most == counts.end() ? Count() : Count(*most);
}

SpeechFigures figuresOf(const std::vector<std::string>& messages) {
    SpeechFigures figures;
    for (const auto& message : messages) {
        const auto sentences = sentencesOf(message);
        figures.messages += sentences.empty() ? 0 : 1;
        for (const auto& sentence : sentences)
            count(sentence, figures);
    }
    return figures;
}

} // namespace lorvane::backend
