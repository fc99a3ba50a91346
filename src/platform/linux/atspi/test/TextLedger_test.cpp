// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/atspi/TextLedger.h"

#include <gtest/gtest.h>

namespace lorvane {
namespace {

const QString smile = QString::fromUtf8("😀");

TEST(TextLedger, KnowsNothingBeforeTheTextWasRead) {
    const TextLedger ledger;
    EXPECT_FALSE(ledger.pairsFor(0));
}

TEST(TextLedger, AnswersForTheCountThatWasEntered) {
    TextLedger ledger;
    ledger.enter(10, 2);
    EXPECT_EQ(ledger.pairsFor(10), 2);
    EXPECT_FALSE(ledger.pairsFor(11));
}

TEST(TextLedger, InsertionsAndRemovalsCarryItOn) {
    TextLedger ledger;
    ledger.enter(10, 2);
    ledger.inserted(3, QStringLiteral("a") + smile + QStringLiteral("b"));
    EXPECT_EQ(ledger.pairsFor(13), 3);
    ledger.removed(1, smile);
    EXPECT_EQ(ledger.pairsFor(12), 2);
}

TEST(TextLedger, AReplacementOfTheSameLengthIsSeen) {
    TextLedger ledger;
    ledger.enter(1, 1);
    ledger.removed(1, smile);
    ledger.inserted(1, QStringLiteral("x"));
    EXPECT_EQ(ledger.pairsFor(1), 0);
}

TEST(TextLedger, AnEventWhoseTextIsNotAsLongAsItSaysEndsIt) {
    TextLedger ledger;
    ledger.enter(10, 2);
    ledger.inserted(3, QStringLiteral("ab"));
    EXPECT_FALSE(ledger.pairsFor(13));
    EXPECT_FALSE(ledger.pairsFor(12));
    ledger.enter(12, 0);
    EXPECT_EQ(ledger.pairsFor(12), 0);
}

TEST(TextLedger, ALostEventShowsInTheCount) {
    TextLedger ledger;
    ledger.enter(10, 0);
    EXPECT_FALSE(ledger.pairsFor(11));
}

TEST(TextLedger, NothingIsBelievedOnceItIsInvalid) {
    TextLedger ledger;
    ledger.enter(10, 0);
    ledger.invalidate();
    EXPECT_FALSE(ledger.pairsFor(10));
}

} // namespace
} // namespace lorvane
