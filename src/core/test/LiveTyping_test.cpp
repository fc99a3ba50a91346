// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/LiveTyping.h"

#include "core/testing/DictationWorld.h"

#include <gtest/gtest.h>

#include <QRegularExpression>

namespace lorvane {

namespace {

using Backend = FakeDictationEndpoints;

const QString hello = QStringLiteral("Hello there, you."); // 17 units: two posts

class LiveTypingTest : public ::testing::Test {
 protected:
    LiveTypingTest() { w.showField(); }

    /// Each runs to its end, however long that takes.
    void arm() {
        run([this](TaskScope scope) { return w.typing.armTyping(std::move(scope)); });
    }
    void type(const QString& fragment) {
        run([=, this](TaskScope scope) { return w.typing.typeLive(fragment, std::move(scope)); });
    }
    SettleOutcome settle(const QString& text) {
        SettleOutcome outcome = SettleOutcome::handOver;
        run([&](TaskScope scope) -> QCoro::Task<void> {
            outcome = co_await w.typing.settleTyping(text, std::move(scope));
        });
        return outcome;
    }
    bool abandon(const QString& reason) {
        bool clean = false;
        run([&](TaskScope scope) -> QCoro::Task<void> {
            clean = co_await w.typing.abandonTyping(reason, std::move(scope));
        });
        return clean;
    }
    void run(const TaskBody& body) {
        const TaskHandle task = startTask(body);
        constexpr Duration step = std::chrono::milliseconds(1);
        const Instant bound = w.clock.now() + std::chrono::minutes(1);
        while (task.isRunning() && w.clock.now() < bound) {
            w.clock.advance(step);
        }
        ASSERT_FALSE(task.isRunning());
    }
    void armAndType(const QString& fragment) {
        arm();
        type(fragment);
    }
    [[nodiscard]] QString text() const { return w.field.text(); }
    [[nodiscard]] QStringList lines() {
        return w.logged("[tirra-").filter(QRegularExpression("type|retyping"));
    }
    [[nodiscard]] QString lastLine() { return lines().isEmpty() ? QString() : lines().back(); }
    [[nodiscard]] QStringList listed() const { return w.preferences.get(preference::appsThatCannotKeepUp); }
    [[nodiscard]] const TypingAttempt& attempt() const { return w.typing.attempt(); }
    void moveFocusElsewhere() { w.fields.focus(DictationWorld::editor, "another"); }
    void bringBrowserToFront() {
        w.workspace.front = RunningApplication{7, "Browser", "org.example.Browser"};
    }

    DictationWorld w;
};

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

// Ways of posting

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

TEST_F(LiveTypingTest, AWayThatRefusesLeavesItToTheNextAtOnce) {
    w.insertionWay.outcome = PostOutcome::refused;
    armAndType(hello);
    EXPECT_EQ(w.keysWay.posts, (std::vector<QString>{"Hello there,", " you."}));
    EXPECT_EQ(text(), hello);
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

TEST_F(LiveTypingTest, WithNoWayAtAllTheFirstFragmentFails) {
    w.insertionWay.offered = false;
    w.keysWay.offered = false;
    armAndType("Hello");
    EXPECT_EQ(listed(), QStringList("org.example.Editor"));
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
    w.pasteKeys.fails = true;
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
