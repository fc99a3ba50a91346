// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/LanguageTable.h"

#include "base/PreferenceCatalogue.h"
#include "base/testing/TestFoundation.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

QString pasteHint(const TestFoundation& world) {
    TestFoundation other;
    const Localisation words = loadWords(world.preferences, other.log);
    EXPECT_EQ(other.lines, QStringList());
    return words.text("Copied — press ⌘V");
}

TEST(LanguageTable, EnglishHasTheWordsOfThisDesktop) {
    TestFoundation world;
    world.preferences.set(preference::appleLanguages, QStringList{"en-GB"});
    EXPECT_EQ(pasteHint(world), "Copied — press Ctrl+V");
}

TEST(LanguageTable, LanguageWithoutATableReadsAsEnglish) {
    TestFoundation world;
    world.preferences.set(preference::appleLanguages, QStringList{"tlh"});
    EXPECT_EQ(pasteHint(world), "Copied — press Ctrl+V");
}

TEST(LanguageTable, SystemDecidesWhenNothingIsChosen) {
    const TestFoundation world;
    EXPECT_EQ(pasteHint(world), "Copied — press Ctrl+V");
}

} // namespace

} // namespace lorvane
