// SPDX-License-Identifier: GPL-3.0-or-later
#include "language/Insights.h"
#include "language/PersonName.h"
#include "language/Sentences.h"
#include "language/SpeechFigures.h"
#include "language/Summary.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

using namespace lorvane::backend;

namespace {

std::vector<std::string> texts(const std::string& text) {
    std::vector<std::string> all;
    for (const auto& sentence : sentencesOf(text))
        all.push_back(sentence.text);
    return all;
}

bool suggests(const Insights& insights, const std::string& title) {
    return std::any_of(insights.suggestions.begin(), insights.suggestions.end(),
                       [&](const auto& suggestion) { return suggestion.title == title; });
}

std::string detail(const Insights& insights, const std::string& title) {
    for (const auto& suggestion : insights.suggestions)
        if (suggestion.title == title)
            return suggestion.detail;
    return {};
}

} // namespace

TEST(Sentences, AreCutAtTheirEndsInAnyScript) {
    EXPECT_EQ(texts("One. Two!  Three?\nFour"), (std::vector<std::string>{"One.", "Two!", "Three?", "Four"}));
    EXPECT_EQ(texts("Это раз. Это два."), (std::vector<std::string>{"Это раз.", "Это два."}));
    EXPECT_EQ(texts("これは一つ。二つ。").size(), 2U);
    EXPECT_EQ(texts("Version 3.5 costs 2.50 now."),
              (std::vector<std::string>{"Version 3.5 costs 2.50 now."}));
    EXPECT_TRUE(texts(" ... !? \n").empty());
}

TEST(Sentences, WordsAreSmallLettersWithoutPunctuation) {
    const auto sentences = sentencesOf("Don\u2019t STOP, \u00c9mile \u2014 \u041d\u0415\u0422!");
    ASSERT_EQ(sentences.size(), 1U);
    EXPECT_EQ(sentences[0].words,
              (std::vector<std::string>{"don't", "stop", "\u00e9mile", "\u043d\u0435\u0442"}));
}

TEST(SpeechFigures, AreExact) {
    const auto figures =
        figuresOf({"So um the the server is down. So you know we wait.", "", "So 7 7 servers."});
    EXPECT_EQ(figures.messages, 2U);
    EXPECT_EQ(figures.sentences, 3U);
    EXPECT_EQ(figures.words, 16U);
    EXPECT_EQ(figures.longestSentence, 7U);
    EXPECT_EQ(figures.doubled, 1U) << "figures are said twice on purpose";
    EXPECT_EQ(figures.fillers, 2U);
    EXPECT_EQ(mostOften(figures.openings), Count("so", 3));
    EXPECT_EQ(figures.contentWords.at("server"), 1U);
}

TEST(InsightsOf, FewerThanThreeMessagesAreNotEnough) {
    EXPECT_FALSE(insightsOf({}));
    EXPECT_FALSE(insightsOf({"One.", "Two."}));
    EXPECT_FALSE(insightsOf({"One.", "Two.", "", " ... "}));
    EXPECT_TRUE(insightsOf({"One.", "Two.", "Three."}));
}

TEST(InsightsOf, ShortVariedSpeechIsPraisedForWhatIsThere) {
    const auto insights =
        insightsOf({"Please send the report. Anna needs it today.", "The meeting moves to noon. Tell Peter.",
                    "Trains run late. We start without him. Lunch is ordered. Bring both keys."});
    ASSERT_TRUE(insights);
    EXPECT_EQ(insights->summary,
              "In 3 messages you said 28 words in 8 sentences, about 4 words in each. These notes come from "
              "counting, not from understanding.");
    EXPECT_TRUE(insights->suggestions.empty());
    EXPECT_EQ(insights->strengths.size(), 3U);
}

TEST(InsightsOf, EachHabitHasItsSuggestionWithItsFigures) {
    const std::string rambling =
        "So um I was thinking that the the budget that we made for the budget review might um not be the "
        "budget "
        "that they want and the budget team should look at it again before we send it.";
    const auto insights = insightsOf(std::vector<std::string>(8, rambling));
    ASSERT_TRUE(insights);
    EXPECT_EQ(
        detail(*insights, "Shorter sentences"),
        "Your sentences have about 38 words, the longest 38. Stop after one thought, and begin the next one "
        "anew.");
    EXPECT_EQ(detail(*insights, "Fewer fillers").substr(0, 50),
              "16 fillers in 304 words; \"um\" came 16 times. A sho");
    EXPECT_TRUE(
        detail(*insights, "Begin in different ways").starts_with("8 of 8 sentences begin with \"so\""));
    EXPECT_TRUE(suggests(*insights, "Words said twice"));
    EXPECT_TRUE(detail(*insights, "A word that comes often").starts_with("\"budget\" came 32 times"));
    EXPECT_TRUE(insights->strengths.empty());
    EXPECT_FALSE(insights->resources.empty());
}

TEST(SummaryOf, TheSentencesAboutTheCommonSubjectStayInTheirOrder) {
    const std::vector<std::string> notes{
        "Good morning. The server lost its disk during the night.",
        "I had soup for lunch. The disk of the server was replaced at noon.",
        "My cousin has a new bicycle. After the disk was replaced the server came up again. See you."};
    const auto summary = summaryOf(notes, 2);
    EXPECT_EQ(summary.find("soup"), std::string::npos) << summary;
    EXPECT_EQ(summary.find("bicycle"), std::string::npos) << summary;
    const auto replaced = summary.find("replaced");
    ASSERT_NE(replaced, std::string::npos) << summary;
    for (const auto& sentence : sentencesOf(summary))
        EXPECT_TRUE(std::any_of(notes.begin(), notes.end(), [&](const auto& note) {
            return note.find(sentence.text) != std::string::npos;
        })) << "in the speaker's own words";
}

TEST(SummaryOf, ItIsShorterThanWhatItSumsUp) {
    std::vector<std::string> notes;
    for (int i = 0; i < 40; ++i)
        notes.push_back("Note " + std::to_string(i) + " tells of item" + std::to_string(i % 7) +
                        " and its price.");
    EXPECT_EQ(sentencesOf(summaryOf(notes)).size(), 5U);
    EXPECT_EQ(summaryOf({"Only this one is here."}), "Only this one is here.");
    EXPECT_EQ(summaryOf({"The same again here.", "The same again here."}), "The same again here.");
    EXPECT_EQ(summaryOf({}), "");
    EXPECT_EQ(summaryOf({"", "..."}), "");
}

TEST(Language, RandomBytesDoNoHarm) {
    std::mt19937 random(3);
    for (int round = 0; round < 300; ++round) {
        std::vector<std::string> all(3);
        for (auto& text : all)
            for (auto k = random() % 200; k > 0; --k)
                text += static_cast<char>(random() % 4 ? random() : ' ');
        summaryOf(all);
        insightsOf(all);
    }
    SUCCEED();
}

TEST(PersonName, NamesOfManyKindsAreNames) {
    for (const char* name : {"Bob", "Zoë Müller", "José da Silva Jr.", "Анна Петрова", "李小龍", "O'Brien",
                             "Anna-Maria O’Neill", "Dr. A. B. Smith", "नेहा शर्मा", "  Ann  "})
        EXPECT_TRUE(looksLikeAName(name)) << name;
}

TEST(PersonName, WhatCarriesAMessageIsNone) {
    for (const char* name : {"",
                             " ",
                             ".",
                             "-. x",
                             "evil.com",
                             "Visit evil.com now",
                             "t.co",
                             "http://evil.example",
                             "evil\u2024com",
                             "a@b",
                             "call 555",
                             "a\nb",
                             "a\tb",
                             "\u202egnp.exe",
                             "a\u2028b",
                             "a\u200bb",
                             "😀",
                             "win <b>money</b>",
                             "win a lot of money with this",
                             "\xff\xfe",
                             "Ann\xc3",
                             "a,b",
                             "..",
                             "A..B"})
        EXPECT_FALSE(looksLikeAName(name)) << name;
    EXPECT_FALSE(looksLikeAName(std::string_view("a\0b", 3)));
}
