// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/atspi/TextUnits.h"

#include <gtest/gtest.h>

namespace lorvane {
namespace {

const QString mixed = QString::fromUtf8("a😀é漢🎉");

TEST(TextUnits, ToolkitsAreKnownByTheirName) {
    for (const char* name : {"gtk", "GTK", "Chromium", "WebKitGTK"}) {
        EXPECT_EQ(unitOfToolkit(QString::fromUtf8(name)), TextUnit::codePoints) << name;
    }
    for (const char* name : {"Qt", "Gecko", "VCL", "LibreOffice"}) {
        EXPECT_EQ(unitOfToolkit(QString::fromUtf8(name)), TextUnit::utf16) << name;
    }
    EXPECT_FALSE(unitOfToolkit(QStringLiteral("something new")));
    EXPECT_FALSE(unitOfToolkit(QString()));
}

TEST(TextUnits, EachEmojiIsOnePair) {
    EXPECT_EQ(surrogatePairs(QString()), 0);
    EXPECT_EQ(surrogatePairs(QStringLiteral("abc")), 0);
    EXPECT_EQ(surrogatePairs(mixed), 2);
}

TEST(TextUnits, ACountProvesTheUnit) {
    EXPECT_EQ(provenUnit(mixed, 5, TextUnit::utf16), TextUnit::codePoints);
    EXPECT_EQ(provenUnit(mixed, 7, TextUnit::codePoints), TextUnit::utf16);
}

TEST(TextUnits, TextWithoutPairsProvesNothingAndKeepsTheAssumption) {
    EXPECT_EQ(provenUnit(QStringLiteral("abc"), 3, TextUnit::utf16), TextUnit::utf16);
    EXPECT_EQ(provenUnit(QStringLiteral("abc"), 3, TextUnit::codePoints), TextUnit::codePoints);
}

TEST(TextUnits, ACountThatFitsNeitherUnitIsNotBelieved) {
    EXPECT_FALSE(provenUnit(mixed, 6, TextUnit::utf16));
    EXPECT_FALSE(provenUnit(QStringLiteral("abc"), 4, TextUnit::codePoints));
}

TEST(TextUnits, PaddingIsTakenOutAndTheFieldsOwnToldFromACharacters) {
    const QChar pad(0xFEFF);
    EXPECT_EQ(withoutPadding(QString::fromUtf8("😀") + pad + QStringLiteral("a") + pad),
              QString::fromUtf8("😀a"));
    EXPECT_TRUE(endsWithFieldPadding(QStringLiteral("a") + pad));
    EXPECT_TRUE(endsWithFieldPadding(QString(pad)));
    EXPECT_TRUE(endsWithFieldPadding(QString(pad) + pad));
    EXPECT_FALSE(endsWithFieldPadding(QString::fromUtf8("😀") + pad));
    EXPECT_FALSE(endsWithFieldPadding(QStringLiteral("a")));
    EXPECT_TRUE(toolkitPadsText(QStringLiteral("Gecko")));
    EXPECT_FALSE(toolkitPadsText(QStringLiteral("Qt")));
}

TEST(TextUnits, ALengthIsInTheUnitAskedFor) {
    EXPECT_EQ(lengthIn(TextUnit::utf16, mixed), 7);
    EXPECT_EQ(lengthIn(TextUnit::codePoints, mixed), 5);
}

TEST(TextUnits, OnlyQtWantsTheLengthOfAnInsertionInUnits) {
    EXPECT_EQ(insertionLength(QStringLiteral("Qt"), mixed), 7);
    for (const char* name : {"gtk", "GTK", "Gecko", "something new", ""}) {
        EXPECT_EQ(insertionLength(QString::fromUtf8(name), mixed), 14) << name;
    }
}

TEST(TextUnits, OnlyChromiumRepeatsALastLineFeed) {
    EXPECT_TRUE(toolkitRepeatsLastLineFeed(QStringLiteral("Chromium")));
    for (const char* name : {"gtk", "Qt", "Gecko", ""}) {
        EXPECT_FALSE(toolkitRepeatsLastLineFeed(QString::fromUtf8(name))) << name;
    }
}

TEST(TextUnits, BlankIsWhiteSpaceLineEndsAndPadding) {
    EXPECT_TRUE(isBlank(QString()));
    EXPECT_TRUE(isBlank(QStringLiteral(" \t\r\n\u2028\u00a0")));
    EXPECT_TRUE(isBlank(QString(QChar(0xFEFF))));
    EXPECT_FALSE(isBlank(QStringLiteral("\n.\n")));
}

} // namespace
} // namespace lorvane
