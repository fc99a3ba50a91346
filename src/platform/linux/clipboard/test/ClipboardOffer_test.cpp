// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/clipboard/ClipboardOffer.h"

#include <gtest/gtest.h>

namespace lorvane {
namespace {

constexpr ProcessId editor = 100;
constexpr ProcessId manager = 200;

const ClipboardContent lentText = contentOfBorrowedText(QStringLiteral("dictated"));
const ClipboardContent oldText = contentOfText(QStringLiteral("old"));

TEST(ClipboardOffer, ATextForEveryoneIsOfferedToEveryone) {
    const ClipboardOffer offer(oldText);
    EXPECT_EQ(offer.forRequestor(editor), oldText);
    EXPECT_EQ(offer.forRequestor(std::nullopt), oldText);
    EXPECT_FALSE(offer.isBorrower(editor));
    EXPECT_FALSE(offer.isLoan());
}

TEST(ClipboardOffer, ATextThatIsHeldBackIsTheOldOneUnderTheSameTypes) {
    auto offer = ClipboardOffer::lent(lentText, editor, oldText);
    offer.holdBack();
    const auto held = offer.forRequestor(editor);
    EXPECT_EQ(held.text(), QStringLiteral("old"));
    EXPECT_EQ(formOf(held), formOf(lentText));
    EXPECT_FALSE(offer.isBorrower(editor));
    EXPECT_EQ(*offer.previous(), oldText) << "what is given back stays as it was";
    offer.letOut();
    EXPECT_EQ(offer.forRequestor(editor), lentText);
    EXPECT_TRUE(offer.isBorrower(editor));
}

TEST(ClipboardOffer, WithoutAnOldTextAnEmptyOneIsOfferedMeanwhile) {
    auto offer = ClipboardOffer::lent(lentText, 0, ClipboardContent{{{"image/png", "png", "image/png", 8}}});
    offer.holdBack();
    EXPECT_EQ(offer.forRequestor(std::nullopt).text(), QString());
    EXPECT_EQ(offer.forRequestor(std::nullopt).find("image/png"), nullptr);
}

TEST(ClipboardOffer, WhatCouldNotBeReadIsNotOfferedMeanwhile) {
    auto offer = ClipboardOffer::lent(lentText, 0, std::nullopt);
    offer.holdBack();
    EXPECT_EQ(offer.forRequestor(std::nullopt), lentText);
    EXPECT_FALSE(offer.isBorrower(std::nullopt)) << "before the keys nobody is the target";
}

TEST(ClipboardOffer, OnlyTheTargetIsOfferedALentText) {
    const auto offer = ClipboardOffer::lent(lentText, editor, oldText);
    EXPECT_EQ(offer.forRequestor(editor), lentText);
    EXPECT_EQ(offer.forRequestor(manager), oldText);
    EXPECT_TRUE(offer.isBorrower(editor));
    EXPECT_FALSE(offer.isBorrower(manager));
    EXPECT_EQ(offer.own(), lentText);
}

TEST(ClipboardOffer, ARequestorWhoseProcessCannotBeToldIsOfferedTheLentText) {
    const auto offer = ClipboardOffer::lent(lentText, editor, oldText);
    EXPECT_EQ(offer.forRequestor(std::nullopt), lentText);
    EXPECT_TRUE(offer.isBorrower(std::nullopt));
}

TEST(ClipboardOffer, EveryoneIsOfferedTheTextThatIsLentToNobodyKnown) {
    const auto offer = ClipboardOffer::lent(lentText, 0, oldText);
    EXPECT_EQ(offer.forRequestor(manager), lentText);
}

TEST(ClipboardOffer, OthersFindNothingWhereNothingWasBefore) {
    const auto offer = ClipboardOffer::lent(lentText, editor, ClipboardContent());
    EXPECT_TRUE(offer.forRequestor(manager).isEmpty());
    EXPECT_EQ(offer.forRequestor(editor), lentText);
}

TEST(ClipboardOffer, EveryoneIsOfferedTheTextWhenWhatWasBeforeCouldNotBeRead) {
    const auto offer = ClipboardOffer::lent(lentText, editor, std::nullopt);
    EXPECT_EQ(offer.forRequestor(manager), lentText);
    EXPECT_FALSE(offer.isBorrower(manager));
}

} // namespace
} // namespace lorvane
