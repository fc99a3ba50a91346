// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/test/LiveTypingFixture.h"

namespace lorvane {

namespace {

// Taking back

TEST_F(LiveTypingTest, NothingTypedIsNothingToTakeBack) {
    arm();
    EXPECT_TRUE(abandon("cancelled"));
    EXPECT_FALSE(attempt().typingTarget.has_value());
    EXPECT_EQ(w.field.backspaces, 0);
}

TEST_F(LiveTypingTest, BackspacesThatAreNotHonouredHandOver) {
    armAndType("Hello");
    w.field.ignoresBackspace = true;
    const Instant begun = w.clock.now();
    EXPECT_FALSE(abandon("cancelled"));
    EXPECT_EQ(lastLine(), "[tirra-type] abandon(cancelled): pressed 5 of 5 typed, field reads 5, wanted 0 — "
                          "handing the text over instead");
    EXPECT_TRUE(attempt().typingStuck);
    EXPECT_EQ(settle("Hello"), SettleOutcome::handOver);
    const double waited = inSeconds(w.clock.now() - begun);
    EXPECT_NEAR(waited, 5 * 0.003 + 0.4 + 5 * 0.004, 0.01);
}

TEST_F(LiveTypingTest, AFieldThatCannotBeReadIsLeftAsItIs) {
    armAndType("Hello");
    w.fields.field("body").text.reset();
    EXPECT_FALSE(abandon("cancelled"));
    EXPECT_EQ(lastLine(),
              "[tirra-type] abandon(cancelled): lost aim on the field, 5 characters left in place");
    EXPECT_EQ(w.field.backspaces, 0);
}

TEST_F(LiveTypingTest, ACaretPastOurTextIsLeftAsItIs) {
    armAndType("Hello");
    w.showField("Hello!");
    EXPECT_FALSE(abandon("cancelled"));
    EXPECT_EQ(lastLine(),
              "[tirra-type] abandon(cancelled): caret at 6 is past our 5 characters — left in place");
    EXPECT_EQ(text(), "Hello!");
}

TEST_F(LiveTypingTest, ACaretThatWillNotReachTheEndIsLeftAsItIs) {
    armAndType("Hello");
    w.showField("Hello", 2);
    w.field.ignoresRightArrow = true;
    EXPECT_FALSE(abandon("cancelled"));
    EXPECT_EQ(lastLine(), "[tirra-type] abandon(cancelled): caret would not reach 5 (at 2 of 5), 5 "
                          "characters left in place");
    EXPECT_EQ(w.field.rightArrows, 3);
    EXPECT_EQ(text(), "Hello");
}

TEST_F(LiveTypingTest, FiveThousandRightArrowsAreTooMany) {
    for (const int gap : {4999, 5000}) {
        w.showField();
        armAndType(QString(gap, 'x'));
        w.field.rightArrows = 0;
        w.showField(QString(gap, 'x'), 0);
        EXPECT_EQ(abandon("cancelled"), gap == 4999);
        EXPECT_EQ(w.field.rightArrows, gap == 4999 ? 4999 : 0);
    }
}

TEST_F(LiveTypingTest, TheUsersBlanksBehindTheCaretAreNeverDeleted) {
    w.showField("Mine.\n\n\n\n\n\n", 5);
    w.insertionWay.offered = false;
    w.keysWay.hasNoEffect = true;
    armAndType("Hello");
    EXPECT_EQ(text(), "Mine.\n\n\n\n\n\n");
    EXPECT_EQ(settle("Hello"), SettleOutcome::handOver);
}

TEST_F(LiveTypingTest, AFieldThatIsShorterThanItShouldBeIsLeftAsItIs) {
    w.showField("Mine.\n\n", 5);
    armAndType("Hello");
    w.showField("Mine.Hello\n", 10);
    EXPECT_FALSE(abandon("cancelled"));
    EXPECT_EQ(lastLine(), "[tirra-type] abandon(cancelled): caret would not reach 10 (at 10 of 11), 5 "
                          "characters left in place");
    EXPECT_EQ(w.field.backspaces, 0);
}

TEST_F(LiveTypingTest, BackspacingStopsWhenTheUserGoesElsewhere) {
    armAndType("Hello");
    int presses = 0;
    w.editingKeys.beforePress = [&] {
        if (++presses == 2) {
            moveFocusElsewhere();
        }
    };
    EXPECT_FALSE(abandon("cancelled"));
    EXPECT_EQ(w.field.backspaces, 2);
}

TEST_F(LiveTypingTest, KeysThatGoOutSlowlyAreSentOneAfterTheOther) {
    armAndType("Hello");
    constexpr Duration keyTime = std::chrono::milliseconds(20);
    std::vector<Instant> presses;
    w.editingKeys.beforePress = [&] { presses.push_back(w.clock.now()); };
    w.editingKeys.pending = [&] { return w.clock.now() < presses.back() + keyTime; };
    EXPECT_TRUE(abandon("cancelled"));
    ASSERT_EQ(presses.size(), 5U);
    for (std::size_t i = 1; i < presses.size(); ++i) {
        EXPECT_GE(presses[i] - presses[i - 1], keyTime);
    }
}

TEST_F(LiveTypingTest, AKeyThatNeverGoesOutIsFollowedByNoOther) {
    armAndType("Hello");
    w.field.ignoresBackspace = true;
    int presses = 0;
    w.editingKeys.beforePress = [&] { ++presses; };
    w.editingKeys.pending = [] { return true; };
    EXPECT_FALSE(abandon("cancelled"));
    EXPECT_EQ(presses, 1);
}

TEST_F(LiveTypingTest, AFieldThatTellsOfTheCaretLaterThanOfTheTextIsWaitedFor) {
    w.showField("Mine. ");
    armAndType("Hello");
    std::vector<Handle> later;
    const auto tellCaret = [this](qint64 more) { w.field.setText(w.field.text(), w.field.caret() + more); };
    w.editingKeys.beforePress = [&] {
        later.push_back(w.clock.after(std::chrono::milliseconds(1), [=] { tellCaret(1); }));
        later.push_back(w.clock.after(std::chrono::milliseconds(8), [=] { tellCaret(-1); }));
    };
    EXPECT_TRUE(abandon("cancelled"));
    EXPECT_EQ(text(), "Mine. ");
    EXPECT_EQ(w.field.backspaces, 5);
}

TEST_F(LiveTypingTest, BackspacingNeverReachesTheUsersText) {
    w.showField("Mine. ");
    armAndType("Hello");
    w.editingKeys.beforePress = [this] { w.showField("Mine. "); }; // a word at once
    abandon("cancelled");
    EXPECT_EQ(text(), "Mine.");
    EXPECT_EQ(w.field.backspaces, 1);
}

TEST_F(LiveTypingTest, BackspacingStopsWhenTheCaretGoesIntoTheUsersBlanks) {
    w.showField("Mine.\n\n", 5);
    armAndType("Hello");
    int presses = 0;
    w.editingKeys.beforePress = [&] {
        if (++presses == 2) {
            w.showField("Mine.Hell\n\n", 11);
        }
    };
    EXPECT_FALSE(abandon("cancelled"));
    EXPECT_EQ(w.field.backspaces, 2);
}

// Cancelling

TEST_F(LiveTypingTest, ACancellationTakesBackWhatIsTyped) {
    w.showField("Mine. ");
    FakeDictation endless;
    endless.deltas = {arrived(QString("Hello")), arrived(QString(" there"))};
    w.backend.streams.push_back(endless);
    w.start();
    w.holdFor(1);
    w.advance(0.1);
    EXPECT_EQ(text(), "Mine. Hello there");
    w.escape();
    w.advance(1);
    EXPECT_EQ(text(), "Mine. ");
    EXPECT_TRUE(w.isIdle());
    EXPECT_FALSE(w.logged("abandon(cancelled): took back").isEmpty());
}

TEST_F(LiveTypingTest, AFragmentInFlightAtACancellationFailsAtItsDeadline) {
    arm();
    w.insertionWay.hasNoEffect = true;
    w.keysWay.offered = false;
    TaskHandle typing =
        startTask([this](TaskScope scope) { return w.typing.typeLive("Hello", std::move(scope)); });
    w.advance(0.05);
    typing.cancel();
    EXPECT_TRUE(abandon("cancelled"));
    EXPECT_TRUE(typing.isRunning());
    w.advance(0.2);
    EXPECT_FALSE(typing.isRunning());
    EXPECT_EQ(listed(), QStringList("org.example.Editor"));
    EXPECT_EQ(lastLine(),
              "[tirra-type] abandon(first-fragment): lost aim on the field, 5 characters left in place");
}

TEST_F(LiveTypingTest, TheNextTakeArmsOnlyWhenTheLastIsTakenBack) {
    armAndType("Hello");
    w.field.lag = std::chrono::milliseconds(30);
    const TaskHandle cancelled = startTask([this](TaskScope scope) -> QCoro::Task<void> {
        co_await w.typing.abandonTyping("cancelled", std::move(scope));
    });
    arm();
    EXPECT_FALSE(cancelled.isRunning());
    EXPECT_EQ(lastLine(), "[tirra-type] armed in Editor: caret at 0, 0 blank after it");
}

} // namespace

} // namespace lorvane
