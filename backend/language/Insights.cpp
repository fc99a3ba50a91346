// SPDX-License-Identifier: GPL-3.0-or-later
#include "language/Insights.h"

#include "language/SpeechFigures.h"

#include <cmath>

namespace lorvane::backend {

namespace {

// Plain-language guides agree on about 20 words as the length where readers begin to lose the thread.
constexpr double longSentence = 20;
constexpr double manyFillers = 2;   // in 100 words
constexpr double fewFillers = 0.5;  // in 100 words
constexpr double manyDoubled = 0.5; // in 100 words
constexpr std::size_t enoughSentences = 8;
constexpr double sameOpening = 0.3;
constexpr double variedOpening = 0.2;
constexpr std::size_t favouriteTimes = 5;
constexpr double favouriteShare = 0.02;

std::string number(std::size_t count, const std::string& one, const std::string& many) {
    return std::to_string(count) + ' ' + (count == 1 ? one : many);
}

std::string roundedWords(double value) {
    return number(static_cast<std::size_t>(std::lround(value)), "word", "words");
}
std::string quoted(const std::string& word) { return '"' + word + '"'; }

void lookAtLength(const SpeechFigures& figures, Insights& insights) {
    const auto mean = figures.wordsPerSentence();
    if (mean <= longSentence) {
        insights.strengths.push_back("Your sentences are easy to follow: about " + roundedWords(mean) +
                                     " each.");
        return;
    }
    insights.suggestions.push_back(
        {"Shorter sentences", "Your sentences have about " + roundedWords(mean) + ", the longest " +
                                  std::to_string(figures.longestSentence) +
                                  ". Stop after one thought, and begin the next one anew."});
    insights.resources.push_back({"The Elements of Style, by William Strunk Jr.",
                                  "Its rule \"Omit needless words\" is what long sentences ask for."});
}

void lookAtFillers(const SpeechFigures& figures, Insights& insights) {
    if (figures.fillersPerHundred() < fewFillers) {
        insights.strengths.push_back(figures.fillers == 0
                                         ? "You use no filler words."
                                         : "You hardly use filler words: " + std::to_string(figures.fillers) +
                                               " in " + std::to_string(figures.words) + " words.");
        return;
    }
    if (figures.fillersPerHundred() < manyFillers)
        return;
    const auto [filler, times] = mostOften(figures.fillerCounts);
    insights.suggestions.push_back(
        {"Fewer fillers", number(figures.fillers, "filler", "fillers") + " in " +
                              std::to_string(figures.words) + " words; " + quoted(filler) + " came " +
                              number(times, "time", "times") + ". A short pause does the same work."});
    insights.resources.push_back(
        {"A minute of practice a day",
         "Tell what you see in front of you, and be silent wherever a filler wants to come."});
}

void lookAtOpenings(const SpeechFigures& figures, Insights& insights) {
    if (figures.sentences < enoughSentences)
        return;
    const auto [word, times] = mostOften(figures.openings);
    const auto share = SpeechFigures::per(times, figures.sentences);
    if (share >= sameOpening)
        insights.suggestions.push_back(
            {"Begin in different ways", std::to_string(times) + " of " + std::to_string(figures.sentences) +
                                            " sentences begin with " + quoted(word) +
                                            ". Try the thing you talk about as the first word."});
    else if (share < variedOpening)
        insights.strengths.push_back("You begin your sentences in different ways.");
}

void lookAtRepeats(const SpeechFigures& figures, Insights& insights) {
    if (figures.doubledPerHundred() >= manyDoubled)
        insights.suggestions.push_back(
            {"Words said twice", number(figures.doubled, "word was", "words were") +
                                     " said twice in a row. Speak a little slower at the start of a "
                                     "thought."});
    const auto [word, times] = mostOften(figures.contentWords);
    if (times < favouriteTimes || SpeechFigures::per(times, figures.words) < favouriteShare)
        return;
    insights.suggestions.push_back(
        {"A word that comes often", quoted(word) + " came " + number(times, "time", "times") + " in " +
                                        number(figures.words, "word", "words") +
                                        ". If it is not the subject, another word now and then helps."});
    insights.resources.push_back(
        {"A thesaurus", "It shows what else can be said where a favourite word comes to mind first."});
}

} // namespace

std::optional<Insights> insightsOf(const std::vector<std::string>& samples) {
    const auto figures = figuresOf(samples);
    if (figures.messages < fewestSamples)
        return std::nullopt;
    Insights insights;
    insights.summary = "In " + number(figures.messages, "message", "messages") + " you said " +
                       number(figures.words, "word", "words") + " in " +
                       number(figures.sentences, "sentence", "sentences") + ", about " +
                       roundedWords(figures.wordsPerSentence()) +
                       " in each. These notes come from counting, not from understanding.";
    lookAtLength(figures, insights);
    lookAtFillers(figures, insights);
    lookAtOpenings(figures, insights);
    lookAtRepeats(figures, insights);
    return insights;
}

} // namespace lorvane::backend
