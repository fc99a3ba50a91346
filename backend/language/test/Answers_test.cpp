// SPDX-License-Identifier: GPL-3.0-or-later
#include "language/Answers.h"

#include <gtest/gtest.h>

using namespace lorvane::backend;

namespace {

const std::string good = R"({"summary":"You speak clearly.","strengths":["Short sentences."],
 "suggestions":[{"title":"Pause","detail":"Breathe."}],"resources":[{"title":"A book","why":"It helps."}]})";

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    return text.replace(text.find(from), from.size(), to);
}

} // namespace

TEST(Answers, InsightsAreReadWithOrWithoutAFence) {
    for (const auto& answer : {good, "```json\n" + good + "\n```", "Here you are: " + good}) {
        const auto insights = readInsights(answer);
        ASSERT_TRUE(insights) << answer;
        EXPECT_EQ(insights->summary, "You speak clearly.");
        EXPECT_EQ(insights->strengths, std::vector<std::string>{"Short sentences."});
        EXPECT_EQ(insights->suggestions.at(0).detail, "Breathe.");
        EXPECT_EQ(insights->resources.at(0).why, "It helps.");
    }
}

TEST(Answers, InsightsOfAnotherShapeAreNone) {
    for (const auto& answer :
         {std::string(), std::string("no"), std::string("{}"), std::string("}{"),
          replaced(good, "strengths", "s"), replaced(good, "\"Short sentences.\"", "7"),
          replaced(good, "\"You speak clearly.\"", "\"  \""), replaced(good, "\"detail\"", "\"text\""),
          replaced(good, "\"Breathe.\"", "null"), replaced(good, "[\"Short sentences.\"]", "\"Short.\""),
          replaced(good, "Breathe.", std::string(2000, 'x')),
          replaced(good, "\"Short sentences.\"", R"("a","b","c","d","e","f","g","h","i")")})
        EXPECT_FALSE(readInsights(answer)) << answer;
}

TEST(Answers, ASummaryIsATextOfSomeLength) {
    EXPECT_EQ(readSummary(R"({"summary":"A good week."})"), "A good week.");
    EXPECT_FALSE(readSummary(R"({"summary":""})"));
    EXPECT_FALSE(readSummary(R"({"summary":["x"]})"));
    EXPECT_FALSE(readSummary("A good week."));
    EXPECT_FALSE(readSummary(R"({"summary":")" + std::string(5000, 'x') + "\"}"));
}

TEST(Answers, ALabelIsOneOfSixOrNone) {
    EXPECT_EQ(readLabel(R"({"label":"family"})"), "family");
    EXPECT_EQ(readLabel(R"({"label":"none"})"), "");
    EXPECT_FALSE(readLabel(R"({"label":"Family"})"));
    EXPECT_FALSE(readLabel(R"({"label":"custom-1234abcd"})"));
    EXPECT_FALSE(readLabel("work"));
}
