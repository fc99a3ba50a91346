// SPDX-License-Identifier: GPL-3.0-or-later
#include "language/Summary.h"

#include "language/Sentences.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

namespace lorvane::backend {

namespace {

using Weights = std::map<std::string, double>;

// Greetings and "thanks" come often and say nothing; lists without an end would fill the whole summary.
constexpr std::size_t fewestWords = 4;
constexpr std::size_t mostWords = 45;
// A summary is a part of the whole: one sentence of so many.
constexpr std::size_t shareOfSentences = 4;

// A word that comes once says nothing of a common subject.
Weights weightsOf(const std::vector<Sentence>& sentences) {
    Weights weights;
    for (const auto& sentence : sentences)
        for (const auto& word : sentence.words)
            if (!isSmallWord(word))
                ++weights[word];
    for (auto& [word, weight] : weights)
        weight -= 1;
    return weights;
}

double scoreOf(const Sentence& sentence, const Weights& weights) {
    double sum = 0;
    std::size_t counted = 0;
    for (const auto& word : sentence.words)
        if (const auto found = weights.find(word); found != weights.end()) {
            sum += found->second;
            ++counted;
        }
    if (counted == 0)
        return 0;
    const bool fits = sentence.words.size() >= fewestWords && sentence.words.size() <= mostWords;
    return sum / std::sqrt(static_cast<double>(counted)) * (fits ? 1 : 0.1);
}

std::vector<Sentence> allSentences(const std::vector<std::string>& texts) {
    std::vector<Sentence> all;
    std::set<std::vector<std::string>> known;
    for (const auto& text : texts)
        for (auto& sentence : sentencesOf(text))
            if (known.insert(sentence.words).second)
                all.push_back(std::move(sentence));
    return all;
}

} // namespace

std::string summaryOf(const std::vector<std::string>& texts, std::size_t mostSentences) {
    const auto sentences = allSentences(texts);
    auto weights = weightsOf(sentences);
    const auto wanted = std::min(mostSentences, (sentences.size() + shareOfSentences - 1) / shareOfSentences);
    std::set<std::size_t> chosen;
    while (chosen.size() < wanted) {
        std::size_t best = sentences.size();
        double bestScore = -1;
        for (std::size_t i = 0; i < sentences.size(); ++i) {
            const double score = chosen.contains(i) ? -1 : scoreOf(sentences[i], weights);
            if (score > bestScore) {
                bestScore = score;
                best = i;
            }
        }
        chosen.insert(best);
        for (const auto& word : sentences[best].words)
            if (const auto found = weights.find(word); found != weights.end())
                found->second /= 2;
    }
    std::string summary;
    for (const auto i : chosen)
        summary += (summary.empty() ? "" : " ") + sentences[i].text;
    return summary;
}

} // namespace lorvane::backend
