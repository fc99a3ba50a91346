// SPDX-License-Identifier: GPL-3.0-or-later
// Which way of posting is taken, and what becomes of those that fail.
#include "core/test/LiveTypingFixture.h"

namespace lorvane {

namespace {

TEST_F(LiveTypingTest, AWayThatSaysYesAndDoesNothingIsGivenUpForTheApplication) {
    w.insertionWay.hasNoEffect = true;
    armAndType("Hello");
    EXPECT_EQ(text(), "Hello");
    EXPECT_TRUE(lines().contains("[tirra-type] Editor says yes and shows no text by insertion"));
    EXPECT_EQ(w.keysWay.posts, (std::vector<QString>{"Hello"}));
    EXPECT_LT(w.clock.now().time_since_epoch(), std::chrono::milliseconds(200)) << "inside one wait";
    arm();
    type(" again");
    EXPECT_EQ(w.insertionWay.posts.size(), 1U) << "it is not tried again";
    EXPECT_EQ(text(), "Hello again");
    EXPECT_TRUE(listed().isEmpty());
}

TEST_F(LiveTypingTest, AWayThatWorkedOnceIsNotGivenUpForOneLateText) {
    armAndType("Hello there, you");
    w.insertionWay.hasNoEffect = true;
    type(" too");
    EXPECT_TRUE(w.keysWay.posts.empty());
    EXPECT_TRUE(attempt().typingHalted);
}

TEST_F(LiveTypingTest, TextThatIsOnlyOnItsWayIsWaitedForBeforeAnotherWayPostsIt) {
    w.insertionWay.answers = false;
    w.field.lag = std::chrono::milliseconds(120);
    armAndType("Hello");
    EXPECT_EQ(text(), "Hello");
    EXPECT_TRUE(w.keysWay.posts.empty());
}

TEST_F(LiveTypingTest, AWayWhoseTextNeverComesLeavesItToTheNext) {
    w.insertionWay.answers = false;
    w.insertionWay.hasNoEffect = true;
    armAndType("Hello");
    EXPECT_EQ(text(), "Hello");
    EXPECT_EQ(w.keysWay.posts, (std::vector<QString>{"Hello"}));
}

TEST_F(LiveTypingTest, AWayThatRefusesLeavesItToTheNextAtOnce) {
    w.insertionWay.outcome = PostOutcome::refused;
    armAndType(hello);
    EXPECT_EQ(w.keysWay.posts, (std::vector<QString>{"Hello there,", " you."}));
    EXPECT_EQ(text(), hello);
}

TEST_F(LiveTypingTest, AWayThatRefusesIsAskedAgainInTheNextTake) {
    w.insertionWay.outcome = PostOutcome::refused;
    armAndType("Hello");
    arm();
    type(" again");
    EXPECT_EQ(w.insertionWay.asked, 2) << "once in each take";
    EXPECT_EQ(lines().filter("does not take text by insertion").size(), 1);
    w.insertionWay.outcome = PostOutcome::posted;
    arm();
    type(" there");
    EXPECT_EQ(w.insertionWay.posts, (std::vector<QString>{" there"}));
    EXPECT_EQ(text(), "Hello again there");
}

TEST_F(LiveTypingTest, AfterARefusalTheTargetIsLookedAtAnew) {
    w.insertionWay.outcome = PostOutcome::refused;
    w.insertionWay.beforePost = [this] { moveFocusElsewhere(); };
    armAndType("Hello");
    EXPECT_TRUE(w.keysWay.posts.empty());
    EXPECT_EQ(lastLine(), "[tirra-type] lost the caret in Editor after 0 characters — stopping there");
    EXPECT_TRUE(listed().isEmpty());
}

TEST_F(LiveTypingTest, AnApplicationThatEveryWayIsRefusedInDidNotTakeTheFirstFragment) {
    w.insertionWay.outcome = PostOutcome::refused;
    w.keysWay.outcome = PostOutcome::refused;
    armAndType("Hello");
    EXPECT_EQ(listed(), QStringList("org.example.Editor"));
    EXPECT_EQ(settle("Hello"), SettleOutcome::paste);
}

TEST_F(LiveTypingTest, CharactersThatAProvenWayCannotCarryArePastedWithoutBlame) {
    w.insertionWay.offered = false;
    armAndType("One");
    w.keysWay.outcome = PostOutcome::refused;
    type(" 漢");
    EXPECT_TRUE(listed().isEmpty());
    EXPECT_EQ(settle("One 漢"), SettleOutcome::landed);
    EXPECT_EQ(w.pasted, QStringList(" 漢"));
}

TEST_F(LiveTypingTest, AfterAnUnansweredInsertionNothingElseIsPosted) {
    w.insertionWay.outcome = PostOutcome::unknown;
    w.insertionWay.hasNoEffect = true;
    armAndType("Hello");
    EXPECT_TRUE(w.keysWay.posts.empty());
    EXPECT_EQ(settle("Hello"), SettleOutcome::handOver);
}

TEST_F(LiveTypingTest, AnUnansweredInsertionThatLandsCounts) {
    w.insertionWay.outcome = PostOutcome::unknown;
    w.field.lag = std::chrono::milliseconds(120);
    armAndType("Hello");
    EXPECT_EQ(text(), "Hello");
    EXPECT_EQ(settle("Hello"), SettleOutcome::landed);
}

TEST_F(LiveTypingTest, WithNoWayAtAllTheTextIsPastedAndTheApplicationMayHaveOneLater) {
    w.insertionWay.offered = false;
    w.keysWay.offered = false;
    armAndType("Hello");
    EXPECT_TRUE(listed().isEmpty());
    EXPECT_EQ(settle("Hello"), SettleOutcome::paste);
    EXPECT_EQ(text(), "");
}

TEST_F(LiveTypingTest, ALineBreakInAFieldOfOneLineIsPastedAndNeverTyped) {
    w.fields.field("body").multiLine = false;
    armAndType("One\nTwo");
    EXPECT_EQ(w.insertionWay.posts, (std::vector<QString>{"One"}));
    EXPECT_EQ(settle("One\nTwo"), SettleOutcome::landed);
    EXPECT_EQ(w.pasted, QStringList("\nTwo"));
    EXPECT_EQ(text(), "One\nTwo");
    EXPECT_TRUE(listed().isEmpty());
}

TEST_F(LiveTypingTest, ALineBreakIsTypedWhereItIsText) {
    armAndType("One\n\tTwo");
    EXPECT_EQ(text(), "One\n\tTwo");
    EXPECT_TRUE(w.pasted.isEmpty());
}

TEST_F(LiveTypingTest, ALineBreakIsNeverAKey) {
    w.insertionWay.offered = false;
    armAndType("One\nTwo");
    EXPECT_EQ(w.keysWay.posts, (std::vector<QString>{"One"}));
    EXPECT_EQ(lastLine(), "[tirra-type] Editor would take the next character for a key after 3 characters — "
                          "keeping them and pasting the rest");
    EXPECT_EQ(settle("One\nTwo"), SettleOutcome::landed);
    EXPECT_EQ(text(), "One\nTwo");
}

TEST_F(LiveTypingTest, ALineBreakAtTheVeryBeginningPastesTheWhole) {
    w.insertionWay.offered = false;
    armAndType("\nTwo");
    EXPECT_EQ(settle("Two"), SettleOutcome::paste);
}

TEST_F(LiveTypingTest, ALineBreakInTheLastWordsIsPastedToo) {
    w.insertionWay.offered = false;
    armAndType("One");
    EXPECT_EQ(settle("One two\nthree"), SettleOutcome::landed);
    EXPECT_EQ(w.keysWay.posts, (std::vector<QString>{"One", " two"}));
    EXPECT_EQ(w.pasted, QStringList("\nthree"));
    EXPECT_EQ(text(), "One two\nthree");
}

} // namespace

} // namespace lorvane
