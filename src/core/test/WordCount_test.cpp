// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/WordCount.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

TEST(WordCount, WordsAreRunsOfLettersAndDigits) {
    EXPECT_EQ(wordCount("Hello, world: 3 times!"), 4);
    EXPECT_EQ(wordCount("  one\ttwo\nthree "), 3);
    EXPECT_EQ(wordCount("Überraschung für Zoë"), 3);
    EXPECT_EQ(wordCount("Привет, как дела?"), 3);
}

TEST(WordCount, NothingAndPunctuationAloneHaveNoWords) {
    EXPECT_EQ(wordCount(""), 0);
    EXPECT_EQ(wordCount(" - … ' 🙂 "), 0);
}

TEST(WordCount, InnerApostropheAndHyphenBelongToTheWord) {
    EXPECT_EQ(wordCount("don't"), 1);
    EXPECT_EQ(wordCount("don’t"), 1);
    EXPECT_EQ(wordCount("well-known"), 1);
    EXPECT_EQ(wordCount("'quoted' -dash- a--b"), 4);
}

TEST(WordCount, MarksBelongToTheirLetters) {
    EXPECT_EQ(wordCount(QString("cafe") + QChar(0x0301) + "s"), 1);
    EXPECT_EQ(wordCount("हिन्दी में"), 2);
}

TEST(WordCount, CharactersOutsideTheFirstPlaneAreWhole) {
    EXPECT_EQ(wordCount(QString::fromUcs4(U"\U00010400\U00010428 b")), 2);
}

} // namespace

} // namespace lorvane
