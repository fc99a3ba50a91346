// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/languages/LanguageCatalogue.h"

#include <QSet>
#include <gtest/gtest.h>

#include <algorithm>

namespace lorvane {

namespace {

QStringList codesOf(const std::vector<Language>& languages) {
    QStringList codes;
    for (const Language& language : languages) {
        codes.append(language.code);
    }
    return codes;
}

TEST(LanguageCatalogue, ATakeCanBeTranslatedInto121LanguagesEachOnce) {
    const QStringList codes = codesOf(translationLanguages());
    EXPECT_EQ(codes.size(), 121);
    EXPECT_EQ(QSet<QString>(codes.begin(), codes.end()).size(), 121);
    EXPECT_EQ(codes.first(), QStringLiteral("en"));
    EXPECT_EQ(codes.mid(1, 5), (QStringList{"es", "zh", "hi", "ar", "pt"}));
    EXPECT_EQ(codes.last(), QStringLiteral("yue"));
}

TEST(LanguageCatalogue, EveryLanguageHasItsNameInTheLanguageItself) {
    EXPECT_EQ(ownNameOf(QStringLiteral("de")), QStringLiteral("Deutsch"));
    EXPECT_EQ(ownNameOf(QStringLiteral("ru")), QString::fromUtf8("Русский"));
    EXPECT_EQ(ownNameOf(QStringLiteral("haw")), QString::fromUtf8("ʻŌlelo Hawaiʻi"));
    EXPECT_EQ(ownNameOf(QStringLiteral("xx")), QString());
    EXPECT_TRUE(std::all_of(translationLanguages().begin(), translationLanguages().end(),
                            [](const Language& language) { return !language.ownName.isEmpty(); }));
}

TEST(LanguageCatalogue, OneHundredLanguagesCanBeDictatedInTheSameOrder) {
    QStringList expected = codesOf(translationLanguages());
    for (const char* code : {"si", "sq", "eu", "tk", "ug", "su",  "mg", "rw", "st", "tt", "ba",
                             "fo", "gd", "br", "co", "yi", "haw", "sm", "bo", "ce", "dv"}) {
        EXPECT_EQ(expected.removeAll(QString::fromLatin1(code)), 1) << code;
    }
    EXPECT_EQ(expected.size(), 100);
    EXPECT_EQ(codesOf(dictationLanguages()), expected);
}

TEST(LanguageCatalogue, HawaiianIsOfferedForTranslationOnly) {
    EXPECT_TRUE(codesOf(translationLanguages()).contains(QStringLiteral("haw")));
    EXPECT_FALSE(codesOf(dictationLanguages()).contains(QStringLiteral("haw")));
    EXPECT_FALSE(canDictateIn(QStringLiteral("haw")));
}

TEST(LanguageCatalogue, ACodeCountsInAnyCaseOfLetters) {
    EXPECT_TRUE(canDictateIn(QStringLiteral("DE")));
    EXPECT_FALSE(canDictateIn(QStringLiteral("HAW")));
    EXPECT_FALSE(canDictateIn(QString()));
}

} // namespace

} // namespace lorvane
