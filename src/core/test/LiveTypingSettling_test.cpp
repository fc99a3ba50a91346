// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/test/LiveTypingFixture.h"

namespace lorvane {

namespace {

using Backend = FakeDictationEndpoints;

// Settling

TEST_F(LiveTypingTest, TheTypedTextIsTheFinalText) {
    armAndType(hello);
    EXPECT_EQ(settle(hello), SettleOutcome::landed);
    EXPECT_EQ(lastLine(), "[tirra-type] settle: 17 characters typed live and they are the final text");
}

TEST_F(LiveTypingTest, ATrailingBlankThatWasTypedStays) {
    armAndType(hello + " ");
    EXPECT_EQ(settle(hello), SettleOutcome::landed);
    EXPECT_EQ(text(), hello + " ");
}

TEST_F(LiveTypingTest, WordsThatTheFinalTextAddsAreTyped) {
    armAndType("Hello");
    EXPECT_EQ(settle("Hello there, you."), SettleOutcome::landed);
    EXPECT_EQ(text(), "Hello there, you.");
    EXPECT_TRUE(w.pasted.isEmpty());
}

TEST_F(LiveTypingTest, TextThatComesLateIsWaitedForBeforeTheRestIsPasted) {
    armAndType("Hello there, you");
    w.field.lag = std::chrono::milliseconds(500);
    type(" and me");
    w.insertionWay.beforePost = {};
    const Instant halted = w.clock.now();
    EXPECT_EQ(settle("Hello there, you and me too."), SettleOutcome::landed);
    EXPECT_GE(w.clock.now() - halted, std::chrono::milliseconds(300));
    w.advance(1);
    EXPECT_EQ(text(), "Hello there, you and me too.");
}

TEST_F(LiveTypingTest, AFirstFragmentThatComesLateIsWaitedForAndTakenBack) {
    w.showField("Mine. ");
    w.insertionWay.offered = false;
    w.field.lag = std::chrono::milliseconds(300);
    armAndType("Hello");
    EXPECT_EQ(lastLine(), "[tirra-type] abandon(first-fragment): took back 5 characters, field back to 6");
    EXPECT_EQ(settle("Hello there"), SettleOutcome::paste);
    EXPECT_EQ(text(), "Mine. ");
}

TEST_F(LiveTypingTest, TheRestIsPastedWhenItsTypingFails) {
    armAndType("Hello there, you");
    w.insertionWay.beforePost = [this] { w.field.lag = std::chrono::milliseconds(201); };
    EXPECT_EQ(settle("Hello there, you and me and them."), SettleOutcome::landed);
    w.advance(0.3);
    EXPECT_EQ(text(), "Hello there, you and me and them.");
    EXPECT_EQ(w.pasted, QStringList("them."));
}

TEST_F(LiveTypingTest, AChangedEarlyWordIsBackspacedAwayAndPasted) {
    w.showField("Mine. ");
    armAndType("Helo there");
    EXPECT_EQ(settle("Hello there"), SettleOutcome::paste);
    EXPECT_EQ(text(), "Mine. ");
    EXPECT_EQ(lines().mid(lines().size() - 2),
              (QStringList{"[tirra-dictate] final text differs from the stream — retyping",
                           "[tirra-type] abandon(not-a-prefix): took back 10 characters, field back to 6"}));
}

TEST_F(LiveTypingTest, AnEmojiCountsTwoForTheCaretAndOneBackspace) {
    armAndType("a😀b");
    EXPECT_EQ(w.field.caret(), 4);
    EXPECT_EQ(settle("else"), SettleOutcome::paste);
    EXPECT_EQ(w.field.backspaces, 3);
    EXPECT_EQ(text(), "");
}

TEST_F(LiveTypingTest, ACaretThatTheUserMovedBackIsBroughtToTheEndBeforeTheRestIsPasted) {
    armAndType("Hello there, you");
    w.fields.secure = true;
    type("x");
    w.fields.secure = false;
    w.showField("Hello there, you", 4);
    EXPECT_EQ(settle("Hello there, you too"), SettleOutcome::landed);
    EXPECT_EQ(w.field.rightArrows, 12);
    EXPECT_EQ(text(), "Hello there, you too");
}

TEST_F(LiveTypingTest, ACaretThatCannotBeBroughtToTheEndHandsOver) {
    armAndType("Hello there, you");
    w.fields.secure = true;
    type("x");
    w.fields.secure = false;
    w.showField("Hello there, you", 4);
    w.field.ignoresRightArrow = true;
    EXPECT_EQ(settle("Hello there, you too"), SettleOutcome::handOver);
    EXPECT_EQ(text(), "Hello there, you");
    EXPECT_TRUE(w.pasted.isEmpty());
}

TEST_F(LiveTypingTest, ACaretPastTheTypedTextHandsOver) {
    armAndType("Hello there, you");
    w.fields.secure = true;
    type("x");
    w.fields.secure = false;
    w.showField("Hello there, you!!");
    EXPECT_EQ(settle("Hello there, you too"), SettleOutcome::handOver);
    EXPECT_EQ(text(), "Hello there, you!!");
}

TEST_F(LiveTypingTest, ARestThatCannotBePastedIsHandedOver) {
    armAndType("Hello there, you");
    w.fields.secure = true;
    type("x");
    EXPECT_EQ(settle("Hello there, you too"), SettleOutcome::handOver) << "a password field";
    w.fields.secure = false;
    w.pasteKeys.outcome = KeysOutcome::notPosted;
    EXPECT_EQ(settle("Hello there, you too"), SettleOutcome::handOver) << "keys that cannot be posted";
}

TEST_F(LiveTypingTest, TheFinalTextHasLandedOnlyWhenItsLastPostIsConfirmedAtLast) {
    for (const int late : {300, 2000}) {
        w.showField();
        w.field.lag = Duration::zero();
        armAndType("Hello there, you");
        w.field.lag = std::chrono::milliseconds(late);
        type(" too");
        EXPECT_EQ(settle("Hello there, you too"),
                  late == 300 ? SettleOutcome::landed : SettleOutcome::handOver);
        w.advance(2);
    }
    EXPECT_EQ(lastLine(), "[tirra-type] settle: not all of the 20 characters typed live are in the field — "
                          "handing the text over");
}

TEST_F(LiveTypingTest, AnApplicationThatIsBusyForAMomentGetsTheRestPasted) {
    armAndType("Hello there, you");
    const Handle wakes = hangFor(std::chrono::milliseconds(1200));
    type(" and me");
    EXPECT_EQ(lastLine(), "[tirra-type] lost the caret in Editor after 16 characters — stopping there");
    EXPECT_EQ(settle("Hello there, you and me."), SettleOutcome::landed);
    EXPECT_EQ(text(), "Hello there, you and me.");
    EXPECT_EQ(w.pasted, QStringList(" and me."));
}

TEST_F(LiveTypingTest, TheFinalTextHasLandedWhenAnApplicationThatWasBusyHoldsAllOfIt) {
    armAndType("Hello there, you");
    Handle wakes;
    w.insertionWay.beforePost = [&] {
        w.insertionWay.beforePost = {};
        w.field.setText("Hello there, you too", 20);
        wakes = hangFor(std::chrono::milliseconds(1200));
    };
    type(" too");
    EXPECT_EQ(settle("Hello there, you too"), SettleOutcome::landed);
    EXPECT_EQ(text(), "Hello there, you too");
}

TEST_F(LiveTypingTest, AnApplicationThatHangsIsNotWaitedForWithoutEnd) {
    armAndType("Hello there, you");
    const Handle wakes = hangFor(std::chrono::minutes(5));
    type(" and me");
    const Instant before = w.clock.now();
    EXPECT_EQ(settle("Hello there, you and me."), SettleOutcome::handOver);
    EXPECT_LE(w.clock.now() - before, std::chrono::seconds(2));
    EXPECT_TRUE(w.pasted.isEmpty());
}

// The end

TEST_F(LiveTypingTest, WhatTypingBorrowedIsPutBackAtTheEndOfTheTake) {
    w.start();
    w.holdFor(1);
    w.advance(0.5);
    EXPECT_EQ(w.keysWay.finished, 1);
    EXPECT_EQ(w.insertionWay.finished, 1);
}

TEST_F(LiveTypingTest, ATakeThatWasTypedLiveEndsWithoutTheChime) {
    w.backend.streams.push_back(Backend::answer(Backend::text("Hello there."), {"Hello", " there."}));
    w.start();
    w.holdFor(1);
    w.advance(0.2);
    EXPECT_TRUE(w.isDone());
    EXPECT_EQ(text(), "Hello there.");
    EXPECT_EQ(w.chime.plays, 0);
    EXPECT_TRUE(w.pasted.isEmpty());
}

TEST_F(LiveTypingTest, TextThatWasHandedOverStandsWholeOnTheClipboard) {
    w.field.corrects = [](const QString& text) { return text.left(2); };
    w.backend.streams.push_back(Backend::answer(Backend::text("Hello there."), {"Hello", " there."}));
    w.start();
    w.holdFor(1);
    w.advance(1);
    EXPECT_EQ(w.notice(), "Copied — press ⌘V");
    EXPECT_EQ(w.pasteboard.text(), "Hello there.");
}

} // namespace

} // namespace lorvane
