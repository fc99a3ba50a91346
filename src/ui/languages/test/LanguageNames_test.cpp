// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/languages/LanguageNames.h"
#include "ui/languages/testing/FakeLocaleNames.h"

#include <QStringList>
#include <gtest/gtest.h>

namespace lorvane {

namespace {

struct LanguageNamesTest : public testing::Test {
    LanguageNamesTest() {
        locale.names = {{"de", "allemand"}, {"fr", QString::fromUtf8("français")}, {"ru", "russe"}};
        locale.englishNames = {{"de", "German"}, {"fr", "French"}, {"ru", "Russian"}};
    }
    QStringList found(const QString& query) const {
        QStringList codes;
        for (const Language& language : names.search(query)) {
            codes.append(language.code);
        }
        return codes;
    }

    FakeLocaleNames locale;
    LanguageNames names{locale};
};

TEST_F(LanguageNamesTest, TheOwnNameFollowsWhenItDiffers) {
    EXPECT_EQ(names.displayName("de"), QStringLiteral("Allemand (Deutsch)"));
    EXPECT_EQ(names.displayName("fr"), QString::fromUtf8("Français"));
}

TEST_F(LanguageNamesTest, TheCatalogueNamesWhatTheLocaleDoesNotKnow) {
    EXPECT_EQ(names.displayName("es"), QString::fromUtf8("Español"));
    EXPECT_EQ(names.displayName("xx"), QStringLiteral("xx"));
    locale.names.insert("xx", "volapuk");
    EXPECT_EQ(names.displayName("xx"), QStringLiteral("Volapuk"));
}

TEST_F(LanguageNamesTest, ABlankQueryFindsAll) {
    EXPECT_EQ(names.search(QString()), dictationLanguages());
    EXPECT_EQ(names.search(QStringLiteral(" \t")), dictationLanguages());
}

TEST_F(LanguageNamesTest, TheNameOfTheUserAndTheEnglishOneAreSearched) {
    EXPECT_EQ(found("LEMAND"), QStringList{"de"});
    EXPECT_EQ(found(" german "), QStringList{"de"});
    EXPECT_EQ(found("russ"), QStringList{"ru"});
    EXPECT_EQ(found("Deutsch"), QStringList());
}

TEST_F(LanguageNamesTest, WhatIsNotDictatedIsNotFound) {
    locale.englishNames.insert("haw", "Hawaiian");
    EXPECT_EQ(found("hawaiian"), QStringList());
}

TEST_F(LanguageNamesTest, WhatTheLocaleDoesNotNameIsFoundByItsOwnName) {
    EXPECT_EQ(found(QString::fromUtf8("suom")), QStringList{"fi"});
}

TEST_F(LanguageNamesTest, AnIWithItsDotIsFoundByOneWithout) {
    locale.names.insert("en", QString::fromUtf8("İngilizce"));
    EXPECT_EQ(found("ingiliz"), QStringList{"en"});
    EXPECT_EQ(found(QString::fromUtf8("İngiliz")), QStringList{"en"});
}

} // namespace

} // namespace lorvane
