// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Localisation.h"

#include <gtest/gtest.h>

using namespace lorvane;

namespace {

TEST(Localisation, AKeyWithoutAnEntryReadsAsItsDefault) {
    const Localisation words;
    EXPECT_EQ(words.text("Try again"), "Try again");
    EXPECT_EQ(words.text("hotkey.short.fn", "fn"), "fn");
    EXPECT_FALSE(words.contains("Try again"));
}

TEST(Localisation, AnEntryOfTheTableWins) {
    const auto words = Localisation::fromJson(R"({"Try again":"Noch einmal","hotkey.short.fn":"Menu"})");
    ASSERT_TRUE(words.has_value());
    EXPECT_EQ(words->text("Try again"), "Noch einmal");
    EXPECT_EQ(words->text("hotkey.short.fn", "fn"), "Menu");
    EXPECT_TRUE(words->contains("Try again"));
}

TEST(Localisation, WhatIsNoTableSaysWhy) {
    for (const char* table : {"", "{", "[]", R"({"a":1})", R"({"a":{"b":"c"}})"}) {
        const auto words = Localisation::fromJson(table);
        ASSERT_FALSE(words.has_value()) << table;
        EXPECT_FALSE(words.error().isEmpty()) << table;
    }
}

TEST(Localisation, TheLanguageIsTheFirstWantedThatThereIs) {
    const QStringList there{"en", "de", "pt"};
    EXPECT_EQ(Localisation::chooseLanguage({}, {"de-AT", "en"}, there), "de");
    EXPECT_EQ(Localisation::chooseLanguage({}, {"fr_FR", "pt_BR"}, there), "pt");
    EXPECT_EQ(Localisation::chooseLanguage({"DE"}, {"en"}, there), "de");
    EXPECT_EQ(Localisation::chooseLanguage({"fr"}, {"pt"}, there), "pt");
    EXPECT_EQ(Localisation::chooseLanguage({"fr"}, {"ja"}, there), "en");
    EXPECT_EQ(Localisation::chooseLanguage({}, {}, there), "en");
}

} // namespace
