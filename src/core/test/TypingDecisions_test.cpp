// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/TypingDecisions.h"

#include <gtest/gtest.h>

#include <ostream>

namespace lorvane {

namespace {

using Verdict = ArrivalWatch::Verdict;

const QString family = QStringLiteral("👩‍👩‍👧‍👦"); // 11 units, one character to a user

TypingAttempt typed(const QString& text) {
    TypingAttempt attempt;
    attempt.typedLive = text;
    attempt.typingTarget = 42;
    attempt.typedStart = 0;
    return attempt;
}

TEST(TypingCut, TakesTwelveUnitsAndThenWhatIsLeft) {
    const QString text("The quick brown fox");
    EXPECT_EQ(nextCut(text, 0, true), 12);
    EXPECT_EQ(nextCut(text, 12, true), 7);
}

TEST(TypingCut, FallsBeforeAPairOfSurrogates) {
    EXPECT_EQ(nextCut("eleven unit😀s", 0, true), 11);
    EXPECT_EQ(nextCut("ten  units😀s", 0, true), 12) << "a pair that ends at the cut goes along";
}

TEST(TypingCut, EndsBeforeALineBreakWhereItIsAKey) {
    EXPECT_EQ(nextCut("one\ntwo", 0, false), 3);
    EXPECT_EQ(nextCut("one\ttwo", 0, false), 3);
    EXPECT_EQ(nextCut("\ntwo", 0, false), 0);
    EXPECT_EQ(nextCut("one\ntwo", 0, true), 7);
    EXPECT_EQ(nextCut("one\ttwo", 0, true), 7);
}

TEST(TypingCut, CarriesNoOtherControlCharacterAnywhere) {
    for (const char16_t character : {u'\0', u'\b', u'\r', u'\x1b', u'\x7f', u'\x85', u'\x2028', u'\x2029'}) {
        const QString text = "one" + QString(QChar(character)) + "two";
        EXPECT_EQ(nextCut(text, 0, true), 3) << static_cast<int>(character);
    }
}

TEST(TypingCut, CarriesNoHalfOfAPair) {
    EXPECT_EQ(nextCut(QString("a") + QChar(0xD83D), 0, true), 1);
    EXPECT_EQ(nextCut(QString("a") + QChar(0xDE00) + "b", 0, true), 1);
}

TEST(TypingText, BackspacesCountCharactersAndNotUnits) {
    EXPECT_EQ(graphemeCount(""), 0);
    EXPECT_EQ(graphemeCount("abc"), 3);
    EXPECT_EQ(graphemeCount("a😀b"), 3);
    EXPECT_EQ(graphemeCount(family), 1);
    EXPECT_EQ(graphemeCount("e\u0301"), 1);
}

TEST(TypingText, ACutPairIsRepairedToTheReplacementCharacter) {
    EXPECT_EQ(firstUnits("ab😀", 3), QString("ab") + QChar::ReplacementCharacter);
    EXPECT_EQ(firstUnits("ab😀", 4), "ab😀");
    EXPECT_EQ(firstUnits("ab", 12), "ab");
    EXPECT_EQ(firstUnits("ab", 0), "");
}

TEST(TypingArrival, TextAndCaretInTheirPlacesIsAnArrival) {
    ArrivalWatch watch(12, 1);
    EXPECT_EQ(watch.take({13, 12}), Verdict::arrived);
}

TEST(TypingArrival, MoreTextThanWasTypedEndsTheWait) {
    ArrivalWatch watch(12, 1);
    EXPECT_EQ(watch.take({14, 12}), Verdict::overfull);
}

TEST(TypingArrival, TooLittleTextTeachesNothingOfTheCaret) {
    ArrivalWatch watch(12, 0);
    EXPECT_EQ(watch.take({5, 5}), Verdict::pending);
    EXPECT_EQ(watch.catchUp(), 0);
}

TEST(TypingArrival, ALaggingCaretIsCaughtUpFromOneToSixtyFour) {
    for (const qint64 behind : {0, 1, 64, 65}) {
        ArrivalWatch watch(100, 0);
        watch.take({100, 100 - behind});
        EXPECT_EQ(watch.catchUp(), behind == 65 ? 0 : behind);
    }
}

TEST(TypingArrival, ACaretThatIsAheadIsNotCaughtUp) {
    ArrivalWatch watch(5, 3);
    EXPECT_EQ(watch.take({8, 7}), Verdict::pending);
    EXPECT_EQ(watch.catchUp(), 0);
}

TEST(TypingArrival, TheLastReadWithAllTheTextDecidesHowFarTheCaretIsBehind) {
    ArrivalWatch watch(20, 0);
    watch.take({20, 10});
    watch.take({20, 18});
    watch.take({19, 3});
    EXPECT_EQ(watch.catchUp(), 2);
}

TEST(TypingArming, AnApplicationOnTheListComesFirst) {
    EXPECT_EQ(armingWithoutField(true, false), ArmingDecision(arming::CouldNotKeepUp()));
    EXPECT_EQ(armingWithoutField(false, false), ArmingDecision(arming::NoAccessibility()));
    EXPECT_EQ(armingWithoutField(false, true), std::nullopt);
}

TEST(TypingArming, BlankAfterTheCaretBecomesTheSlack) {
    EXPECT_EQ(armingFor(FieldProbe{0, 0, true}), ArmingDecision(arming::Armed{0, 0}));
    EXPECT_EQ(armingFor(FieldProbe{6, 5, true}), ArmingDecision(arming::Armed{5, 1}));
    EXPECT_EQ(armingFor(FieldProbe{7, 3, false}), ArmingDecision(arming::TextAfter{3, 7}));
    EXPECT_EQ(armingFor(std::nullopt), ArmingDecision(arming::Unreadable()));
}

TEST(TypingArming, EveryDecisionHasItsLine) {
    EXPECT_EQ(describe(arming::CouldNotKeepUp(), "Ed"),
              "[tirra-type] not armed in Ed: it could not keep up before");
    EXPECT_EQ(describe(arming::NoAccessibility(), "Ed"), "[tirra-type] not armed in Ed: no Accessibility");
    EXPECT_EQ(describe(arming::Unreadable(), "Ed"), "[tirra-type] not armed in Ed: the field cannot be read");
    EXPECT_EQ(describe(arming::TextAfter{3, 7}, "Ed"),
              "[tirra-type] not armed in Ed: caret at 3 of 7, real text after it");
    EXPECT_EQ(describe(arming::Armed{0, 0}, "%1 Ed"),
              "[tirra-type] armed in %1 Ed: caret at 0, 0 blank after it");
}

TEST(TypingSettling, StuckTextIsHandedOverWhateverElseHolds) {
    TypingAttempt attempt = typed("Hello");
    attempt.typingStuck = true;
    EXPECT_EQ(settleDecision(attempt, "Hello"), SettleDecision(settling::HandOver()));
}

TEST(TypingSettling, NothingTypedOrNoTargetPastesTheWhole) {
    TypingAttempt gone = typed("Hello");
    gone.typingTarget.reset();
    TypingAttempt startless = typed("Hello");
    startless.typedStart.reset();
    for (const TypingAttempt& attempt : {gone, startless, typed("")}) {
        EXPECT_EQ(settleDecision(attempt, "Hello"), SettleDecision(settling::PasteWhole()));
    }
    EXPECT_EQ(describe(settling::PasteWhole(), gone),
              "[tirra-type] settle: nothing was typed live (target gone, typed 5) — pasting");
    EXPECT_EQ(describe(settling::PasteWhole(), typed("")),
              "[tirra-type] settle: nothing was typed live (target kept, typed 0) — pasting");
}

TEST(TypingSettling, TypedTextButForBlanksAtItsEndsHasLanded) {
    for (const char* text : {"Hello there.", "Hello there. ", "Hello there.\n", " Hello there.\n"}) {
        EXPECT_EQ(settleDecision(typed(text), "Hello there."), SettleDecision(settling::Landed())) << text;
    }
}

TEST(TypingSettling, AfterAHaltTheFinalTextIsConfirmedFirst) {
    TypingAttempt halted = typed("Hello there. ");
    halted.typingHalted = true;
    EXPECT_EQ(settleDecision(halted, "Hello there."), SettleDecision(settling::Confirm()));
}

TEST(TypingSettling, MoreTextIsTypedAndAfterAHaltPasted) {
    EXPECT_EQ(settleDecision(typed("Hello"), "Hello there."), SettleDecision(settling::TypeRest{" there."}));
    TypingAttempt halted = typed("Hello");
    halted.typingHalted = true;
    EXPECT_EQ(settleDecision(halted, "Hello there."), SettleDecision(settling::PasteRest{" there."}));
}

TEST(TypingSettling, AChangedBeginningIsTakenBack) {
    EXPECT_EQ(settleDecision(typed("Helo"), "Hello there."), SettleDecision(settling::TakeBack()));
    EXPECT_EQ(settleDecision(typed("Hello there, you"), "Hello there"), SettleDecision(settling::TakeBack()));
}

TEST(TypingSettling, HalfOfACharacterIsNoBeginning) {
    EXPECT_EQ(settleDecision(typed("caf"
                                   "e"),
                             "cafe\u0301 noir"),
              SettleDecision(settling::TakeBack()));
    EXPECT_EQ(settleDecision(typed("👩"), family + " home"), SettleDecision(settling::TakeBack()));
    EXPECT_EQ(settleDecision(typed(family), family + " home"), SettleDecision(settling::TypeRest{" home"}));
}

TEST(TypingAim, TellsHowFarTheCaretIsFromTheEndOfWhatWasTyped) {
    TypingAttempt attempt = typed("Hello");
    attempt.typedStart = 10;
    attempt.typingSlack = 2;
    using Kind = CaretAim::Kind;
    EXPECT_EQ(caretAim(attempt, CaretReading{17, 15}), (CaretAim{Kind::reachable, 0}));
    EXPECT_EQ(caretAim(attempt, CaretReading{17, 11}), (CaretAim{Kind::reachable, 4}));
    EXPECT_EQ(caretAim(attempt, CaretReading{17, 16}), (CaretAim{Kind::past, 0}));
    EXPECT_EQ(caretAim(attempt, CaretReading{14, 12}), (CaretAim{Kind::missing, 0}))
        << "the blanks behind the caret are the user's";
    EXPECT_EQ(caretAim(attempt, std::nullopt), (CaretAim{Kind::lost, 0}));
    attempt.typedStart.reset();
    EXPECT_EQ(caretAim(attempt, CaretReading{17, 15}), (CaretAim{Kind::lost, 0}));
}

} // namespace

} // namespace lorvane
