// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/language/IcuLocaleNames.h"

#include "ui/languages/LanguageNames.h"

#include <QStringList>
#include <gtest/gtest.h>

namespace lorvane {

namespace {

TEST(IcuLocaleNames, NamesAreInTheLanguageOfTheUser) {
    EXPECT_EQ(IcuLocaleNames("de_AT").nameOf("ru"), QStringLiteral("Russisch"));
    EXPECT_EQ(IcuLocaleNames("fr-FR").nameOf("de"), QStringLiteral("allemand"));
    EXPECT_EQ(IcuLocaleNames("fr-FR").englishNameOf("de"), QStringLiteral("German"));
}

TEST(IcuLocaleNames, ASystemWithoutALanguageReadsEnglish) {
    EXPECT_EQ(IcuLocaleNames("C").nameOf("de"), QStringLiteral("German"));
    EXPECT_EQ(IcuLocaleNames(QString()).nameOf("de"), QStringLiteral("German"));
}

TEST(IcuLocaleNames, ALanguageThatNobodyNamesHasNone) {
    EXPECT_EQ(IcuLocaleNames("en").nameOf("xx"), QString());
    EXPECT_EQ(IcuLocaleNames("en").englishNameOf("xx"), QString());
    EXPECT_EQ(IcuLocaleNames("de").nameOf("no such code"), QString());
}

TEST(IcuLocaleNames, CapitalsFollowTheLanguageOfTheUser) {
    EXPECT_EQ(IcuLocaleNames("fr").capitalised("allemand"), QStringLiteral("Allemand"));
    EXPECT_EQ(IcuLocaleNames("tr").capitalised("ingilizce"), QString::fromUtf8("İngilizce"));
    EXPECT_EQ(IcuLocaleNames("en").capitalised(QString::fromUtf8("𐐨𐐩")), QString::fromUtf8("𐐀𐐩"));
    EXPECT_EQ(IcuLocaleNames("en").capitalised(QString()), QString());
}

TEST(IcuLocaleNames, EveryLanguageOfTheCatalogueHasAnEnglishName) {
    const IcuLocaleNames names("ru_RU");
    QStringList nameless;
    for (const Language& language : translationLanguages()) {
        if (names.englishNameOf(language.code).isEmpty()) {
            nameless.append(language.code);
        }
    }
    EXPECT_EQ(nameless, QStringList());
}

TEST(IcuLocaleNames, TheEnglishNameIsFoundOnASystemOfAnyLanguage) {
    for (const char* locale : {"ru_RU", "ja_JP", "de_DE", "en_US", "C", "xx_YY"}) {
        const IcuLocaleNames locale_names{QString::fromLatin1(locale)};
        const auto found = LanguageNames(locale_names).search(QStringLiteral("finnish"));
        ASSERT_EQ(found.size(), 1U) << locale;
        EXPECT_EQ(found.front().code, QStringLiteral("fi"));
    }
}

TEST(IcuLocaleNames, DisplayNamesReadAsInARow) {
    const IcuLocaleNames german("de_DE");
    EXPECT_EQ(LanguageNames(german).displayName("de"), QStringLiteral("Deutsch"));
    EXPECT_EQ(LanguageNames(german).displayName("pt"), QString::fromUtf8("Portugiesisch (Português)"));
}

} // namespace

} // namespace lorvane
