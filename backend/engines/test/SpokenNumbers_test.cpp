// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/CleanUp.h"

#include <gtest/gtest.h>

using namespace lorvane::backend;

namespace {

std::string written(const std::string& raw) {
    CleanUp cleanUp("before,"); // so that no capital hides what is written
    auto text = cleanUp.add(raw);
    text += cleanUp.finish();
    if (text.ends_with('.'))
        text.pop_back();
    return text;
}

} // namespace

TEST(SpokenNumbers, FromTenOnTheyAreFigures) {
    EXPECT_EQ(written("twenty five"), "25");
    EXPECT_EQ(written("we need ten of them"), "we need 10 of them");
    EXPECT_EQ(written("one hundred and five people"), "105 people");
    EXPECT_EQ(written("two hundred and fifty six"), "256");
    EXPECT_EQ(written("three thousand four hundred and twelve"), "3,412");
    EXPECT_EQ(written("twenty five thousand"), "25,000");
    EXPECT_EQ(written("three million"), "3 million");
    EXPECT_EQ(written("one million two hundred thousand"), "1,200,000");
    EXPECT_EQ(written("between ten and twenty"), "between 10 and 20");
}

TEST(SpokenNumbers, SmallOnesStayWords) {
    EXPECT_EQ(written("one of them said no"), "one of them said no");
    EXPECT_EQ(written("two or three days"), "two or three days");
    EXPECT_EQ(written("no one knows zero about it"), "no one knows zero about it");
    EXPECT_EQ(written("a hundred times"), "a hundred times");
}

TEST(SpokenNumbers, PercentAndDecimalsAskForFigures) {
    EXPECT_EQ(written("five percent"), "5%");
    EXPECT_EQ(written("twenty five per cent of it"), "25% of it");
    EXPECT_EQ(written("three point one four"), "3.14");
    EXPECT_EQ(written("two point five percent"), "2.5%");
    EXPECT_EQ(written("one point two million"), "1.2 million");
    EXPECT_EQ(written("one point is clear"), "one point is clear");
    EXPECT_EQ(written("fifty per person"), "50 per person");
}

TEST(SpokenNumbers, TimesOfDay) {
    EXPECT_EQ(written("at five thirty"), "at 5:30");
    EXPECT_EQ(written("at ten oh five"), "at 10:05");
    EXPECT_EQ(written("five p m"), "5 pm");
    EXPECT_EQ(written("seven forty five a.m. tomorrow"), "7:45 am tomorrow");
    EXPECT_EQ(written("nine o'clock"), "9 o'clock");
    EXPECT_EQ(written("ten to five"), "ten to five");
    EXPECT_EQ(written("at five a man came"), "at five a man came");
}

TEST(SpokenNumbers, Years) {
    EXPECT_EQ(written("in nineteen eighty four"), "in 1984");
    EXPECT_EQ(written("twenty twenty five"), "2025");
    EXPECT_EQ(written("nineteen oh five"), "1905");
    EXPECT_EQ(written("in two thousand and five"), "in 2005");
    EXPECT_EQ(written("nineteen hundred"), "1900");
    EXPECT_EQ(written("in ten sixty six"), "in 1066");
    EXPECT_EQ(written("the nineteen eighties"), "the nineteen eighties");
    EXPECT_EQ(written("the nineteen hundreds"), "the nineteen hundreds");
    EXPECT_EQ(written("thirteen fourteen people"), "thirteen fourteen people");
}

TEST(SpokenNumbers, OrdinalsWhereTheyCanBeNothingElse) {
    EXPECT_EQ(written("the twenty first of june"), "the 21st of June");
    EXPECT_EQ(written("the third of april"), "the 3rd of April");
    EXPECT_EQ(written("june second"), "June 2nd");
    EXPECT_EQ(written("the fifteenth floor"), "the 15th floor");
    EXPECT_EQ(written("first of all"), "first of all");
    EXPECT_EQ(written("the second one"), "the second one");
    EXPECT_EQ(written("a twenty second break"), "a twenty second break");
    EXPECT_EQ(written("a tenth of it"), "a tenth of it");
}

TEST(SpokenNumbers, WhatCanBeReadInTwoWaysStaysWords) {
    EXPECT_EQ(written("one twenty five"), "one twenty five");
    EXPECT_EQ(written("twenty four seven"), "twenty four seven");
    EXPECT_EQ(written("ten twenty thirty"), "ten twenty thirty");
    EXPECT_EQ(written("five five one"), "five five one");
}

TEST(SpokenNumbers, FourDigitsAndMoreAreOneNumber) {
    EXPECT_EQ(written("my code is four two oh seven"), "my code is 4207");
    EXPECT_EQ(written("five five five one two three four"), "5551234");
}

TEST(SpokenNumbers, AStyleMayWantWords) {
    CleanUp cleanUp({}, "Spell out numbers, please");
    EXPECT_EQ(cleanUp.add("twenty five people came"), "Twenty five people came");
}
