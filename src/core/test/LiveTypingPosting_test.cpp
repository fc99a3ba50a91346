// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/test/LiveTypingFixture.h"

namespace lorvane {

namespace {

// Arming

TEST_F(LiveTypingTest, AnEmptyFieldArmsAtZeroWithNothingBehind) {
    arm();
    EXPECT_EQ(lastLine(), "[tirra-type] armed in Editor: caret at 0, 0 blank after it");
    EXPECT_EQ(attempt().typingTarget, DictationWorld::editor);
}

TEST_F(LiveTypingTest, ALineFeedBehindTheCaretIsSlackAndStaysBehindTheText) {
    w.showField("Mine.\n", 5);
    armAndType(hello);
    EXPECT_EQ(w.logged("armed").back(), "[tirra-type] armed in Editor: caret at 5, 1 blank after it");
    EXPECT_EQ(text(), "Mine." + hello + "\n");
    EXPECT_EQ(settle(hello), SettleOutcome::landed);
}

TEST_F(LiveTypingTest, ACaretInTheMiddleOfATextIsNotArmed) {
    w.showField("Mine too", 4);
    armAndType(hello);
    EXPECT_EQ(lastLine(), "[tirra-type] not armed in Editor: caret at 4 of 8, real text after it");
    EXPECT_EQ(text(), "Mine too");
    EXPECT_EQ(settle(hello), SettleOutcome::paste);
    EXPECT_EQ(lastLine(), "[tirra-type] settle: nothing was typed live (target gone, typed 0) — pasting");
}

TEST_F(LiveTypingTest, AFieldThatCannotBeReadIsNotArmed) {
    w.fields.field("body").text.reset();
    arm();
    EXPECT_EQ(lastLine(), "[tirra-type] not armed in Editor: the field cannot be read");
    w.fields.loseFocus(DictationWorld::editor);
    arm();
    EXPECT_EQ(lastLine(), "[tirra-type] not armed in Editor: the field cannot be read");
}

TEST_F(LiveTypingTest, WithoutAccessibilityOrAnApplicationInFrontNothingIsArmed) {
    w.accessibility.setTrusted(false);
    arm();
    EXPECT_EQ(lastLine(), "[tirra-type] not armed in Editor: no Accessibility");
    w.accessibility.setTrusted(true);
    w.workspace.front.reset();
    arm();
    EXPECT_EQ(lastLine(), "[tirra-type] not armed in ?: no Accessibility");
}

TEST_F(LiveTypingTest, AListedApplicationIsNeverArmedHoweverOftenItIsUsed) {
    w.preferences.set(preference::appsThatCannotKeepUp, {"org.example.Editor"});
    for (int take = 0; take < 3; ++take) {
        armAndType(hello);
        EXPECT_EQ(settle(hello), SettleOutcome::paste);
    }
    EXPECT_TRUE(w.logged("] armed").isEmpty());
    EXPECT_EQ(w.logged("not armed in Editor: it could not keep up before").size(), 3);
}

TEST_F(LiveTypingTest, TheListIsLookedAtBeforeAccessibility) {
    w.preferences.set(preference::appsThatCannotKeepUp, {"org.example.Editor"});
    w.accessibility.setTrusted(false);
    arm();
    EXPECT_EQ(lastLine(), "[tirra-type] not armed in Editor: it could not keep up before");
}

TEST_F(LiveTypingTest, AnApplicationWithoutAnIdentifierIsNotOnTheList) {
    w.preferences.set(preference::appsThatCannotKeepUp, {""});
    w.workspace.front->bundleIdentifier.clear();
    arm();
    EXPECT_EQ(lastLine(), "[tirra-type] armed in Editor: caret at 0, 0 blank after it");
}

TEST_F(LiveTypingTest, ARetryForgetsWhatWasTypedAndArmsWhereTheCaretIs) {
    armAndType("Hello");
    arm();
    EXPECT_EQ(lastLine(), "[tirra-type] armed in Editor: caret at 5, 0 blank after it");
    EXPECT_EQ(attempt().typedLive, "");
    EXPECT_EQ(text(), "Hello");
}

// Typing

TEST_F(LiveTypingTest, TextGoesOutTwelveUnitsAtATime) {
    armAndType(hello);
    EXPECT_EQ(w.insertionWay.posts, (std::vector<QString>{"Hello there,", " you."}));
    EXPECT_EQ(text(), hello);
    EXPECT_EQ(attempt().typedLive, hello);
}

TEST_F(LiveTypingTest, APostThatWouldCutAPairHasElevenUnits) {
    armAndType("Hello there😀!");
    EXPECT_EQ(w.insertionWay.posts, (std::vector<QString>{"Hello there", "😀!"}));
    EXPECT_EQ(text(), "Hello there😀!");
}

TEST_F(LiveTypingTest, TheNextPostWaitsUntilTheLastStandsInTheField) {
    w.field.lag = std::chrono::milliseconds(50);
    std::vector<Instant> times;
    w.insertionWay.beforePost = [&] { times.push_back(w.clock.now()); };
    armAndType(hello);
    ASSERT_EQ(times.size(), 2U);
    EXPECT_GE(times[1] - times[0], w.field.lag);
    EXPECT_LE(times[1] - times[0], w.field.lag + std::chrono::milliseconds(4));
}

TEST_F(LiveTypingTest, NothingIsTypedAfterAHaltOrWithoutATarget) {
    arm();
    type("");
    EXPECT_TRUE(w.insertionWay.posts.empty());
    abandon("cancelled");
    type("Hello");
    EXPECT_TRUE(w.insertionWay.posts.empty());
}

TEST_F(LiveTypingTest, AModifierThatIsHeldTakesBackAndPastesTheWhole) {
    for (const auto modifier :
         {modifierFlag::shift, modifierFlag::control, modifierFlag::option, modifierFlag::command}) {
        w.showField("Mine. ");
        w.editingKeys.held = 0;
        armAndType("Hello");
        w.editingKeys.held = modifier;
        type(" there");
        EXPECT_EQ(text(), "Mine. ");
        EXPECT_EQ(lastLine(), "[tirra-type] abandon(modifier-held): took back 5 characters, field back to 6");
        EXPECT_EQ(settle("Hello there"), SettleOutcome::paste);
    }
}

TEST_F(LiveTypingTest, TheFunctionKeyIsNoModifier) {
    w.editingKeys.held = modifierFlag::function;
    armAndType("Hello");
    EXPECT_EQ(text(), "Hello");
}

TEST_F(LiveTypingTest, ASwitchOfApplicationStopsThereAndPastesTheWholeInTheNewOne) {
    armAndType("Hello");
    bringBrowserToFront();
    type(" there");
    EXPECT_EQ(lastLine(), "[tirra-type] focus left Browser after 5 characters — stopping there");
    EXPECT_EQ(text(), "Hello");
    EXPECT_EQ(settle("Hello there"), SettleOutcome::paste);
    EXPECT_EQ(lastLine(), "[tirra-type] settle: nothing was typed live (target gone, typed 5) — pasting");
    EXPECT_EQ(text(), "Hello");
}

TEST_F(LiveTypingTest, WithNothingInFrontTheNameIsAQuestionMark) {
    armAndType("Hello");
    w.workspace.front.reset();
    type(" there");
    EXPECT_EQ(lastLine(), "[tirra-type] focus left ? after 5 characters — stopping there");
}

TEST_F(LiveTypingTest, AFirstFragmentThatDoesNotArriveListsTheApplication) {
    w.insertionWay.offered = false;
    w.keysWay.hasNoEffect = true;
    armAndType("Hello");
    EXPECT_EQ(listed(), QStringList("org.example.Editor"));
    EXPECT_TRUE(lines().contains("[tirra-type] Editor did not take the first fragment — pasting this one "
                                 "whole, and not trying again"));
    // 0.2 s for its arrival, 0.4 s more before it counts as lost.
    EXPECT_NEAR(inSeconds(w.clock.now().time_since_epoch()), 0.6, 0.005);
}

TEST_F(LiveTypingTest, TextThatArrivesTooShortIsNotTouchedAndHandedOver) {
    w.field.corrects = [](const QString& text) { return text.left(2); };
    armAndType("Hello");
    EXPECT_EQ(lastLine(), "[tirra-type] abandon(first-fragment): caret would not reach 5 (at 2 of 2), 5 "
                          "characters left in place");
    EXPECT_EQ(settle("Hello"), SettleOutcome::handOver);
    EXPECT_EQ(lastLine(), "[tirra-type] settle: typing could not be undone — handing the text over");
    EXPECT_EQ(w.field.backspaces, 0);
}

TEST_F(LiveTypingTest, ATextThatGrowsUnderTypingIsLeftInPlace) {
    w.field.corrects = [](const QString& text) { return text + ")"; };
    armAndType("(see");
    EXPECT_LT(w.clock.now().time_since_epoch(), std::chrono::milliseconds(10)) << "at once";
    EXPECT_EQ(lastLine(),
              "[tirra-type] abandon(first-fragment): caret at 5 is past our 4 characters — left in place");
    EXPECT_EQ(settle("(see this"), SettleOutcome::handOver);
    EXPECT_EQ(text(), "(see)");
}

TEST_F(LiveTypingTest, TwelveUnitsAreStillTheFirstFragmentAndThirteenAreNot) {
    for (const int units : {12, 13}) {
        w.showField();
        w.preferences.remove(preference::appsThatCannotKeepUp);
        w.insertionWay.hasNoEffect = false;
        armAndType(QString(units - 1, 'a'));
        w.fields.secure = false;
        w.insertionWay.hasNoEffect = true;
        type("b");
        EXPECT_EQ(listed().isEmpty(), units == 13) << units;
        EXPECT_EQ(attempt().typingHalted, units == 13) << units;
    }
}

TEST_F(LiveTypingTest, AFieldThatStopsKeepingUpKeepsItsTextAndGetsTheRestPasted) {
    armAndType("Hello there, you");
    w.field.lag = std::chrono::milliseconds(300);
    type(" and me");
    EXPECT_EQ(lastLine(), "[tirra-type] Editor stopped keeping up after 23 characters — keeping them and "
                          "pasting the rest");
    type(" too");
    w.advance(0.3);
    w.field.lag = Duration::zero();
    EXPECT_EQ(settle("Hello there, you and me too."), SettleOutcome::landed);
    EXPECT_EQ(text(), "Hello there, you and me too.");
    EXPECT_EQ(w.pasted, QStringList(" too."));
    EXPECT_TRUE(listed().isEmpty());
}

TEST_F(LiveTypingTest, ALaggingCaretIsCaughtUpAtTheDeadline) {
    armAndType("Hello");
    w.field.caretLag = 3;
    type(" there");
    EXPECT_EQ(lastLine(), "[tirra-type] caret was 3 behind at 11 characters — caught it up");
    EXPECT_EQ(w.field.rightArrows, 3);
    EXPECT_EQ(attempt().typedLive, "Hello there");
}

TEST_F(LiveTypingTest, ACaretSixtyFiveBehindIsNotCaughtUp) {
    for (const int behind : {64, 65}) {
        w.showField(QString(100, 'x'));
        w.field.rightArrows = 0;
        w.field.caretLag = behind;
        w.field.ignoresBackspace = true;
        armAndType("Hello");
        EXPECT_EQ(attempt().typedLive, behind == 64 ? "Hello" : "");
        EXPECT_EQ(listed().isEmpty(), behind == 64);
    }
}

TEST_F(LiveTypingTest, InAPasswordFieldNothingIsPosted) {
    armAndType("Hello there, you");
    w.fields.secure = true;
    type(" too");
    EXPECT_EQ(attempt().typedLive, "Hello there, you");
    EXPECT_EQ(lastLine(), "[tirra-type] Editor stopped keeping up after 16 characters — keeping them and "
                          "pasting the rest");
    EXPECT_EQ(w.insertionWay.posts.size(), 2U);
}

TEST_F(LiveTypingTest, AFieldThatHangsEndsTheWaitWithoutAKey) {
    armAndType("Hello there, you");
    w.insertionWay.beforePost = [this] { w.fields.field("body").text.reset(); };
    type(" too");
    EXPECT_TRUE(attempt().typingHalted);
    EXPECT_EQ(settle("Hello there, you too"), SettleOutcome::handOver);
    EXPECT_EQ(w.field.rightArrows + w.field.backspaces, 0);
}

TEST_F(LiveTypingTest, FocusThatMovesInsideTheApplicationEndsTheWaitWithoutAKey) {
    armAndType("Hello there, you");
    w.insertionWay.beforePost = [this] { moveFocusElsewhere(); };
    type(" too");
    EXPECT_TRUE(attempt().typingHalted);
    EXPECT_EQ(settle("Hello there, you too"), SettleOutcome::handOver);
    EXPECT_EQ(w.field.rightArrows + w.field.backspaces, 0);
}

TEST_F(LiveTypingTest, NothingIsPostedOnceTheFocusIsInAnotherField) {
    armAndType("Hello");
    moveFocusElsewhere();
    type(" there");
    EXPECT_EQ(w.insertionWay.posts, (std::vector<QString>{"Hello"}));
    EXPECT_EQ(lastLine(), "[tirra-type] lost the caret in Editor after 5 characters — stopping there");
    EXPECT_EQ(settle("Hello there"), SettleOutcome::handOver);
    EXPECT_TRUE(listed().isEmpty()) << "the application is not to blame";
}

TEST_F(LiveTypingTest, AClickIntoTheTextBetweenFragmentsIsUndoneBeforeTheNext) {
    w.showField("Mine. ");
    armAndType("Hello");
    w.showField("Mine. Hello", 2);
    type(" there");
    EXPECT_EQ(text(), "Mine. Hello there");
    EXPECT_EQ(w.field.rightArrows, 9);
}

TEST_F(LiveTypingTest, TextThatTheUserTypesBetweenFragmentsEndsTheTyping) {
    armAndType("Hello");
    w.showField("Hello!");
    type(" there");
    EXPECT_EQ(text(), "Hello!");
    EXPECT_EQ(settle("Hello there"), SettleOutcome::handOver);
}

} // namespace

} // namespace lorvane
