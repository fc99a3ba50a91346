// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/pill/PillContent.h"

#include <gtest/gtest.h>

namespace lorvane::pillContent {

namespace {

const Localisation words;
const PillLanguages languages{[] {
                                  return std::vector<LanguageChoice>{
                                      {QStringLiteral("de"), QStringLiteral("Deutsch")},
                                      {QStringLiteral("fr"), QStringLiteral("Français")}};
                              },
                              [](const QString& code) { return QStringLiteral("<%1>").arg(code); }};

TEST(PillContent, TheLanguageChipSaysAutoWithoutALanguage) {
    EXPECT_EQ(speechLabel(QString()), QStringLiteral("AUTO"));
}

TEST(PillContent, TheLanguageChipSaysTheCodeInCapitalsListedOrNot) {
    EXPECT_EQ(speechLabel(QStringLiteral("ru")), QStringLiteral("RU"));
    EXPECT_EQ(speechLabel(QStringLiteral("en")), QStringLiteral("EN"));
    EXPECT_EQ(speechLabel(QStringLiteral("de")), QStringLiteral("DE"));
}

TEST(PillContent, TheLanguageMenuHasItsThreeRowsInOrder) {
    const std::vector<MenuRow> expected{{QStringLiteral("Auto-detect"), QString(), false},
                                        {QStringLiteral("Русский"), QStringLiteral("ru"), true},
                                        {QStringLiteral("English"), QStringLiteral("en"), false}};
    EXPECT_EQ(speechMenu(QStringLiteral("ru"), words), expected);
}

TEST(PillContent, ALanguageThatIsNotListedMarksNoRow) {
    for (const MenuRow& row : speechMenu(QStringLiteral("de"), words)) {
        EXPECT_FALSE(row.isChosen) << qUtf8Printable(row.label);
    }
    EXPECT_TRUE(speechMenu(QString(), words).front().isChosen);
}

TEST(PillContent, TheTipsOfTheLanguageChipAndTheMicrophone) {
    EXPECT_EQ(speechTip(words), QStringLiteral("Change language"));
    EXPECT_EQ(microphoneTip(Hotkey::fn, words), QStringLiteral("Dictate — or hold fn"));
    EXPECT_EQ(microphoneTip(Hotkey::rightCommand, words), QStringLiteral("Dictate — or hold right ⌘"));
}

TEST(PillContent, TheTranslationChipSaysTheCodeOrNothing) {
    EXPECT_EQ(translationLabel(QString()), QString());
    EXPECT_EQ(translationLabel(QStringLiteral("pt-br")), QStringLiteral("PT-BR"));
}

TEST(PillContent, TheTranslationTipNamesTheLanguage) {
    EXPECT_EQ(translationTip(QString(), languages, words), QStringLiteral("Translate to"));
    EXPECT_EQ(translationTip(QStringLiteral("de"), languages, words), QStringLiteral("Translating → <de>"));
}

TEST(PillContent, TheTranslationMenuBeginsWithOffAndGoesOnWithTheTargets) {
    const std::vector<MenuRow> expected{{QStringLiteral("Off"), QString(), false},
                                        {QStringLiteral("Deutsch"), QStringLiteral("de"), false},
                                        {QStringLiteral("Français"), QStringLiteral("fr"), true}};
    EXPECT_EQ(translationMenu(QStringLiteral("fr"), languages, words), expected);
    EXPECT_TRUE(translationMenu(QString(), languages, words).front().isChosen);
    EXPECT_EQ(translationTitle(words), QStringLiteral("Translate to"));
}

TEST(PillContent, ProgressSaysWhetherItTranslates) {
    EXPECT_EQ(progressLabel(false, words), QStringLiteral("Cleaning up"));
    EXPECT_EQ(progressLabel(true, words), QStringLiteral("Translating"));
}

TEST(PillContent, EveryPhaseIsAnnouncedInItsOwnWords) {
    EXPECT_EQ(announcement(Idle{}, false, words), QStringLiteral("Ready to dictate"));
    EXPECT_EQ(announcement(Recording{}, false, words), QStringLiteral("Listening"));
    EXPECT_EQ(announcement(Processing{}, false, words), QStringLiteral("Cleaning up"));
    EXPECT_EQ(announcement(Processing{}, true, words), QStringLiteral("Translating"));
    EXPECT_EQ(announcement(Done{}, false, words), QStringLiteral("Inserted"));
    EXPECT_EQ(announcement(Notice{QStringLiteral("Oh no"), NoticeSeverity::error}, false, words),
              QStringLiteral("Oh no"));
}

TEST(PillContent, WordsComeFromTheTable) {
    const auto table = Localisation::fromJson(R"({"Cleaning up": "Wird aufgeräumt"})");
    ASSERT_TRUE(table.has_value());
    EXPECT_EQ(progressLabel(false, *table), QStringLiteral("Wird aufgeräumt"));
}

} // namespace

} // namespace lorvane::pillContent
