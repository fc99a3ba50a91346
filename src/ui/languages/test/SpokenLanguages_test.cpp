// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/languages/SpokenLanguages.h"

#include "base/PreferenceCatalogue.h"
#include "base/testing/TestFoundation.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

using Codes = QSet<QString>;

TEST(SpokenLanguages, EnglishSystemSpeaksEnglishAlone) {
    EXPECT_EQ(spokenLanguagesOf({"en-US"}), Codes{"en"});
    EXPECT_EQ(spokenLanguagesOf({}), Codes{"en"});
}

TEST(SpokenLanguages, RegionsAndScriptsDoNotCount) {
    EXPECT_EQ(spokenLanguagesOf({"pt-BR", "de"}), (Codes{"pt", "de", "en"}));
    EXPECT_EQ(spokenLanguagesOf({"zh-Hant-TW", "ZH-Hans-CN"}), (Codes{"zh", "en"}));
}

TEST(SpokenLanguages, StartsFromTheSystemAndTheStoredLanguageOfTakes) {
    TestFoundation world;
    world.preferences.set(preference::speakLang, QStringLiteral("de"));
    world.preferences.set(preference::autoDetect, false);
    const SpokenLanguages spoken(world.preferences, {"fr-FR"});
    EXPECT_EQ(spoken.languages(), (Codes{"fr", "en"}));
    EXPECT_TRUE(spoken.autoDetect());
    EXPECT_EQ(spoken.speakLang(), QStringLiteral("de"));
}

struct Choice {
    Codes languages;
    bool autoDetect;
    QString speakLang;
};

class SpokenLanguagesChoice : public testing::TestWithParam<Choice> {};

TEST_P(SpokenLanguagesChoice, IsStored) {
    TestFoundation world;
    world.preferences.set(preference::speakLang, QStringLiteral("it"));
    SpokenLanguages spoken(world.preferences, {});
    const Choice& choice = GetParam();
    spoken.setLanguages(choice.languages, choice.autoDetect);
    EXPECT_EQ(spoken.languages(), choice.languages);
    EXPECT_EQ(spoken.autoDetect(), choice.autoDetect);
    EXPECT_EQ(spoken.speakLang(), choice.speakLang);
    EXPECT_EQ(world.preferences.stored(preference::speakLang), choice.speakLang);
    EXPECT_EQ(world.preferences.stored(preference::autoDetect), choice.autoDetect);
    const QStringList stored = world.preferences.get(preference::speakLangs);
    EXPECT_EQ(stored.size(), choice.languages.size());
    EXPECT_EQ(Codes(stored.begin(), stored.end()), choice.languages);
}

INSTANTIATE_TEST_SUITE_P(OneWithoutDetectionIsTheLanguageOfTakes, SpokenLanguagesChoice,
                         testing::Values(Choice{{"de"}, false, "de"}));
INSTANTIATE_TEST_SUITE_P(OtherwiseTheBackendTells, SpokenLanguagesChoice,
                         testing::Values(Choice{{"de"}, true, ""}, Choice{{}, false, ""},
                                         Choice{{}, true, ""}, Choice{{"de", "fr"}, false, ""},
                                         Choice{{"de", "fr"}, true, ""}));

} // namespace

} // namespace lorvane
