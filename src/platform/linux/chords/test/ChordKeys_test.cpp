// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/chords/ChordEditingKeys.h"
#include "platform/linux/chords/ChordPasteKeys.h"

#include "base/testing/VirtualClock.h"
#include "input/KeyEvents.h"

#include <QStringList>
#include <gtest/gtest.h>

#include <linux/input-event-codes.h>

namespace lorvane {

namespace {

constexpr Duration millisecond = std::chrono::milliseconds(1);
const QString opened = QStringLiteral("open");
const QString closed = QStringLiteral("close");

QString pressed(int key) { return QStringLiteral("%1 down").arg(key); }
QString released(int key) { return QStringLiteral("%1 up").arg(key); }

/// A desktop that takes 20 ms to open a session, and answers for keys at once.
class FakeKeyboard final : public ChordKeyboard {
 public:
    explicit FakeKeyboard(Clock& clock) : ChordKeyboard(clock), clock_(clock) {}

    [[nodiscard]] bool isOffered() const override { return offered; }
    QCoro::Task<bool> open(TaskScope scope) override {
        if (!isOpen) {
            calls.append(opened);
            co_await sleep(clock_, 20 * millisecond, scope);
            isOpen = opens;
        }
        co_return isOpen;
    }
    void close() override {
        if (isOpen) {
            calls.append(closed);
        }
        isOpen = false;
    }

    bool offered = true;
    bool opens = true;
    /// What becomes of one key when it goes down.
    std::pair<int, KeysOutcome> failing{0, KeysOutcome::posted};
    QStringList calls;

 protected:
    QCoro::Task<KeysOutcome> move(int inputCode, bool down, TaskScope /*scope*/) override {
        if (!isOpen) {
            co_return KeysOutcome::notPosted;
        }
        calls.append(down ? pressed(inputCode) : released(inputCode));
        co_return down&& inputCode == failing.first ? failing.second : KeysOutcome::posted;
    }

 private:
    Clock& clock_;
    bool isOpen = false;
};

class ChordKeys : public ::testing::Test {
 protected:
    void startPaste(PasteKeys::Aim aim = [] { return PasteRoute::standard; }) {
        outcome.reset();
        pasting = startTask([this, aim = std::move(aim)](TaskScope scope) -> QCoro::Task<void> {
            const KeysOutcome posted = co_await paste.post(aim, scope);
            outcome = posted;
        });
    }
    /// To its end.
    std::optional<KeysOutcome> post() {
        startPaste();
        clock.advance(std::chrono::seconds(1));
        return outcome;
    }

    VirtualClock clock;
    FakeKeyboard keyboard{clock};
    std::uint32_t held = 0;
    std::vector<int> chord{KEY_LEFTCTRL, KEY_V};
    ChordFacts facts{[this] { return held; }, [this](PasteRoute) { return chord; }};
    ChordPasteKeys paste{keyboard, clock, facts};
    ChordEditingKeys editing{keyboard, clock, facts};
    std::optional<KeysOutcome> outcome;
    TaskHandle pasting;
    const QStringList wholeChord{opened,          pressed(KEY_LEFTCTRL),  pressed(KEY_V),
                                 released(KEY_V), released(KEY_LEFTCTRL), closed};
};

TEST_F(ChordKeys, TheSessionIsOpenForTheChordAlone) {
    EXPECT_EQ(post(), KeysOutcome::posted);
    EXPECT_EQ(keyboard.calls, wholeChord);
}

TEST_F(ChordKeys, KeysAreFarEnoughApartForAnApplicationToSeeThemWithTheirModifiers) {
    startPaste();
    clock.advance(20 * millisecond);
    EXPECT_EQ(keyboard.calls.last(), pressed(KEY_LEFTCTRL));
    clock.advance(14 * millisecond);
    EXPECT_EQ(keyboard.calls.last(), pressed(KEY_LEFTCTRL));
    clock.advance(millisecond);
    EXPECT_EQ(keyboard.calls.last(), pressed(KEY_V));
    clock.advance(14 * millisecond);
    EXPECT_EQ(keyboard.calls.last(), pressed(KEY_V));
    clock.advance(millisecond);
    EXPECT_EQ(keyboard.calls, wholeChord);
}

TEST_F(ChordKeys, TheModifiersStayDownUntilTheChordHasHadItsEffect) {
    bool hasEffect = false;
    startPaste({[] { return PasteRoute::standard; }, [&] { return hasEffect; }});
    clock.advance(400 * millisecond);
    EXPECT_EQ(keyboard.calls.last(), released(KEY_V)) << "held for long enough, it would paste again";
    hasEffect = true;
    clock.advance(5 * millisecond);
    EXPECT_EQ(outcome, KeysOutcome::posted);
    EXPECT_EQ(keyboard.calls, wholeChord);
}

TEST_F(ChordKeys, TheModifiersOfAChordWithoutEffectGoUpAfterHalfASecond) {
    startPaste({[] { return PasteRoute::standard; }, [] { return false; }});
    clock.advance(549 * millisecond); // of which opening and pressing take 50
    EXPECT_EQ(keyboard.calls.last(), released(KEY_V));
    clock.advance(millisecond);
    EXPECT_EQ(keyboard.calls, wholeChord);
    EXPECT_EQ(outcome, KeysOutcome::posted);
}

TEST_F(ChordKeys, AKeyboardThatIsNotOfferedIsNotOpened) {
    keyboard.offered = false;
    EXPECT_EQ(post(), KeysOutcome::notPosted);
    EXPECT_FALSE(editing.canPost());
    EXPECT_TRUE(keyboard.calls.isEmpty());
}

TEST_F(ChordKeys, AKeyboardThatDoesNotOpenPostsNothingAndTakesNoAim) {
    keyboard.opens = false;
    bool isAimTaken = false;
    startPaste([&] {
        isAimTaken = true;
        return PasteRoute::standard;
    });
    clock.advance(std::chrono::seconds(1));
    EXPECT_EQ(outcome, KeysOutcome::notPosted);
    EXPECT_FALSE(isAimTaken);
}

TEST_F(ChordKeys, AModifierThatIsNotAnsweredForPastesNothingAndIsLetGoByTheEndOfTheSession) {
    for (const KeysOutcome failure : {KeysOutcome::notPosted, KeysOutcome::unknown}) {
        keyboard.failing = {KEY_LEFTCTRL, failure};
        keyboard.calls.clear();
        EXPECT_EQ(post(), KeysOutcome::notPosted);
        EXPECT_EQ(keyboard.calls, QStringList({opened, pressed(KEY_LEFTCTRL), closed}));
    }
}

TEST_F(ChordKeys, WhatBecameOfTheLastKeyIsWhatBecameOfTheChord) {
    for (const KeysOutcome failure : {KeysOutcome::notPosted, KeysOutcome::unknown}) {
        keyboard.failing = {KEY_V, failure};
        keyboard.calls.clear();
        EXPECT_EQ(post(), failure);
        EXPECT_EQ(keyboard.calls, QStringList({opened, pressed(KEY_LEFTCTRL), pressed(KEY_V), closed}));
    }
}

TEST_F(ChordKeys, APasteThatIsEndedInTheMiddleLeavesNoKeyDown) {
    startPaste();
    clock.advance(30 * millisecond);
    ASSERT_EQ(keyboard.calls.last(), pressed(KEY_LEFTCTRL));
    pasting = TaskHandle();
    EXPECT_EQ(keyboard.calls.last(), closed);
    EXPECT_FALSE(outcome.has_value());
}

TEST_F(ChordKeys, ModifiersThatStayHeldPostNothingUnlessTheyAreTheChordsOwn) {
    held = modifierFlag::option;
    EXPECT_EQ(post(), KeysOutcome::notPosted);
    EXPECT_TRUE(keyboard.calls.isEmpty());
    held = modifierFlag::shift;
    EXPECT_EQ(post(), KeysOutcome::notPosted);
    EXPECT_TRUE(keyboard.calls.isEmpty());
    held = modifierFlag::control;
    EXPECT_EQ(post(), KeysOutcome::posted);
}

TEST_F(ChordKeys, AModifierThatIsLetGoInTimeIsWaitedFor) {
    held = modifierFlag::option;
    const Handle letGo = clock.after(490 * millisecond, [this] { held = 0; });
    EXPECT_EQ(post(), KeysOutcome::posted);
}

TEST_F(ChordKeys, AModifierThatGoesDownWhileTheSessionIsOpenedSpoilsTheChord) {
    startPaste();
    held = modifierFlag::option;
    clock.advance(std::chrono::seconds(1));
    EXPECT_EQ(outcome, KeysOutcome::notPosted);
    EXPECT_EQ(keyboard.calls, QStringList({opened, closed}));
}

TEST_F(ChordKeys, AimIsTakenWhenTheModifiersAreUpAndTheSessionIsOpenAndBeforeTheFirstKey) {
    held = modifierFlag::option;
    const Handle letGo = clock.after(100 * millisecond, [this] { held = 0; });
    std::uint32_t heldAtAim = 1;
    QStringList callsAtAim;
    startPaste([&] {
        heldAtAim = held;
        callsAtAim = keyboard.calls;
        return PasteRoute::standard;
    });
    clock.advance(std::chrono::seconds(1));
    EXPECT_EQ(outcome, KeysOutcome::posted);
    EXPECT_EQ(heldAtAim, 0U);
    EXPECT_EQ(callsAtAim, QStringList{opened});
}

TEST_F(ChordKeys, ALayoutWithoutAChordIsNotPastedBy) {
    chord.clear();
    EXPECT_EQ(post(), KeysOutcome::notPosted);
    EXPECT_TRUE(keyboard.calls.isEmpty());
}

TEST_F(ChordKeys, EditingKeysShareOneSessionThatEndsSoonAfterTheLast) {
    editing.press(EditingKey::deleteBackward);
    editing.press(EditingKey::rightArrow);
    clock.advance(100 * millisecond);
    editing.press(EditingKey::deleteBackward);
    QStringList expected{opened,
                         pressed(KEY_BACKSPACE),
                         released(KEY_BACKSPACE),
                         pressed(KEY_RIGHT),
                         released(KEY_RIGHT),
                         pressed(KEY_BACKSPACE),
                         released(KEY_BACKSPACE)};
    clock.advance(314 * millisecond); // the key itself takes 15
    EXPECT_EQ(keyboard.calls, expected);
    clock.advance(millisecond);
    EXPECT_EQ(keyboard.calls, expected << closed);
}

TEST_F(ChordKeys, AnEditingKeyIsPendingUntilItIsLetGo) {
    EXPECT_FALSE(editing.isPending());
    editing.press(EditingKey::deleteBackward);
    EXPECT_TRUE(editing.isPending());
    clock.advance(34 * millisecond);
    EXPECT_TRUE(editing.isPending());
    clock.advance(millisecond);
    EXPECT_FALSE(editing.isPending());
    EXPECT_EQ(keyboard.calls.last(), released(KEY_BACKSPACE));
}

TEST_F(ChordKeys, EditingKeysAreDroppedWhileAModifierStaysHeld) {
    held = modifierFlag::control;
    editing.press(EditingKey::deleteBackward);
    editing.press(EditingKey::deleteBackward);
    EXPECT_EQ(editing.modifierFlags(), modifierFlag::control);
    clock.advance(600 * millisecond);
    EXPECT_FALSE(editing.isPending());
    held = 0;
    clock.advance(600 * millisecond);
    EXPECT_TRUE(keyboard.calls.isEmpty());
    editing.press(EditingKey::rightArrow);
    clock.advance(600 * millisecond);
    EXPECT_EQ(keyboard.calls, QStringList({opened, pressed(KEY_RIGHT), released(KEY_RIGHT), closed}));
}

TEST_F(ChordKeys, AnEditingKeyThatCannotBePostedTakesThoseBehindItAlong) {
    keyboard.failing = {KEY_BACKSPACE, KeysOutcome::unknown};
    editing.press(EditingKey::deleteBackward);
    editing.press(EditingKey::rightArrow);
    clock.advance(std::chrono::seconds(1));
    EXPECT_EQ(keyboard.calls, QStringList({opened, pressed(KEY_BACKSPACE), closed}));
}

TEST_F(ChordKeys, EditingKeysCloseNoSessionThatAPasteIsUsing) {
    editing.press(EditingKey::deleteBackward);
    clock.advance(320 * millisecond); // 15 ms before it would be closed
    keyboard.calls.clear();
    startPaste();
    clock.advance(std::chrono::seconds(1));
    EXPECT_EQ(outcome, KeysOutcome::posted);
    EXPECT_EQ(keyboard.calls, wholeChord.mid(1)) << "it was open";
}

TEST_F(ChordKeys, KeysOfOursAreOnTheirWayUntilTheyHaveComePastEverybody) {
    EXPECT_FALSE(keyboard.isPosting());
    startPaste();
    clock.advance(20 * millisecond);
    EXPECT_TRUE(keyboard.isPosting()) << keyboard.calls.last().toStdString();
    clock.advance(30 * millisecond);
    ASSERT_EQ(outcome, KeysOutcome::posted);
    clock.advance(199 * millisecond);
    EXPECT_TRUE(keyboard.isPosting());
    clock.advance(millisecond);
    EXPECT_FALSE(keyboard.isPosting());
}

} // namespace

} // namespace lorvane
