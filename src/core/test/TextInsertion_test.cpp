// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/testing/DictationWorld.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

using Outcome = PasteOutcome::Kind;

class TextInsertionTest : public ::testing::Test, public DictationWorld {
 protected:
    void SetUp() override {
        insertion.onUnanswered = [this] { ++unanswered; };
        pasteboard.copyElsewhere("mine");
    }
    void startPaste(const QString& text) {
        outcome.reset();
        task = startTask([this, text](TaskScope scope) { return paste(text, std::move(scope)); });
    }
    void paste(const QString& text) {
        startPaste(text);
        advance(0.15);
    }
    QCoro::Task<void> paste(QString text, TaskScope scope) {
        outcome = co_await insertion.pasteText(text, scope);
    }

    TaskHandle task;
    std::optional<PasteOutcome> outcome;
    int unanswered = 0;
};

TEST_F(TextInsertionTest, KeysFollowTheTextAfterTheWait) {
    startPaste("dictated");
    EXPECT_TRUE(pasteboard.isLent());
    advance(0.149);
    EXPECT_TRUE(pasteKeys.posted.empty());
    EXPECT_FALSE(outcome);
    advance(0.001);
    EXPECT_EQ(pasteKeys.posted, std::vector<PasteRoute>{PasteRoute::standard});
    EXPECT_EQ(outcome, PasteOutcome{});
    EXPECT_EQ(pasted, QStringList{"dictated"});
}

TEST_F(TextInsertionTest, TextIsLentToTheApplicationInFrontAlone) {
    paste("dictated");
    ASSERT_EQ(pasteboard.loans.size(), 1U);
    EXPECT_EQ(pasteboard.loans[0].target, editor);
    EXPECT_EQ(pasteboard.loans[0].previous.items, FakePasteboard::snapshotOfText("mine").items);
    EXPECT_EQ(pasteboard.pasteInto(7), "mine");
}

TEST_F(TextInsertionTest, PasswordFieldLeavesTheClipboardUntouched) {
    fields.secure = true;
    paste("dictated");
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->kind, Outcome::secure);
    EXPECT_EQ(pasteboard.writes, 0);
    EXPECT_TRUE(pasteKeys.posted.empty());
}

TEST_F(TextInsertionTest, TerminalsGetTheirOwnKeys) {
    workspace.front = RunningApplication{editor, "Terminal", "org.gnome.Terminal"};
    paste("dictated");
    EXPECT_EQ(pasteKeys.posted.back(), PasteRoute::terminal);
    EXPECT_FALSE(pasteboard.loans.back().primaryToo);
    advance(3);
    workspace.front = RunningApplication{editor, "XTerm", "xterm"};
    paste("dictated");
    EXPECT_EQ(pasteKeys.posted.back(), PasteRoute::primaryTerminal);
    EXPECT_TRUE(pasteboard.loans.back().primaryToo);
}

TEST_F(TextInsertionTest, ATerminalThatIsReachedByTheOtherSelectionAloneIsLentThatToo) {
    workspace.front = RunningApplication{editor, "Terminal", "org.gnome.Terminal"};
    pasteKeys.hasV = false;
    paste("dictated");
    EXPECT_EQ(pasteKeys.posted.back(), PasteRoute::terminal);
    EXPECT_TRUE(pasteboard.loans.back().primaryToo);
}

TEST_F(TextInsertionTest, ApplicationThatComesToTheFrontMeanwhileIsServedTheText) {
    startPaste("dictated");
    advance(0.1);
    workspace.front = RunningApplication{9, "XTerm", "xterm"};
    pasteKeys.onPosted = [this] { pasted.append(*pasteboard.pasteInto(9)); };
    advance(0.05);
    EXPECT_EQ(pasteKeys.posted, std::vector<PasteRoute>{PasteRoute::primaryTerminal});
    EXPECT_EQ(pasted, QStringList{"dictated"});
    advance(2);
    EXPECT_EQ(pasteboard.text(), "mine");
}

TEST_F(TextInsertionTest, ApplicationThatComesToTheFrontWhileModifiersAreHeldIsServedTheText) {
    pasteKeys.delay = seconds(0.4);
    startPaste("dictated");
    advance(0.5);
    workspace.front = RunningApplication{9, "XTerm", "xterm"};
    pasteKeys.onPosted = [this] { pasted.append(*pasteboard.pasteInto(9)); };
    advance(0.05);
    EXPECT_EQ(pasteKeys.posted, std::vector<PasteRoute>{PasteRoute::primaryTerminal});
    EXPECT_EQ(pasted, QStringList{"dictated"});
}

TEST_F(TextInsertionTest, RequestDuringTheWaitForModifiersProvesNothing) {
    pasteKeys.delay = seconds(0.4);
    pasteKeys.onPosted = nullptr;
    startPaste("dictated");
    advance(0.5);
    pasteboard.pasteInto(editor);
    advance(3);
    EXPECT_EQ(unanswered, 1);
    EXPECT_EQ(pasteboard.text(), "dictated");
}

TEST_F(TextInsertionTest, KeysOfWhichNobodyKnowsAreVerifiedInTheField) {
    showField("said: ");
    pasteKeys.outcome = KeysOutcome::unknown;
    paste("dictated");
    advance(0.01);
    EXPECT_EQ(outcome, PasteOutcome{});
    EXPECT_EQ(field.text(), "said: dictated");
    advance(2);
    EXPECT_EQ(pasteboard.text(), "mine");
    EXPECT_EQ(unanswered, 0);
}

TEST_F(TextInsertionTest, KeysOfWhichNobodyKnowsAndWithoutEffectHaveFailed) {
    showField("said: ");
    pasteKeys.outcome = KeysOutcome::unknown;
    pasteKeys.onPosted = nullptr;
    paste("dictated");
    advance(0.99);
    EXPECT_FALSE(outcome);
    advance(0.02);
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->kind, Outcome::failed);
}

TEST_F(TextInsertionTest, UnverifiablePasteCountsAsDoneAndItsTextStaysOnTheClipboard) {
    pasteKeys.outcome = KeysOutcome::unknown;
    paste("dictated");
    EXPECT_EQ(outcome, PasteOutcome{});
    EXPECT_EQ(pasted, QStringList{"dictated"}) << "somebody has asked for it, but it may have been anybody";
    advance(2);
    EXPECT_EQ(pasteboard.text(), "dictated");
    EXPECT_EQ(unanswered, 1);
}

TEST_F(TextInsertionTest, TextThatStandsInTheFieldWasTakenWhoeverAskedForIt) {
    showField();
    pasteKeys.onPosted = [this] { field.paste("dictated"); };
    paste("dictated");
    advance(2);
    EXPECT_EQ(pasteboard.text(), "mine");
    EXPECT_EQ(unanswered, 0);
}

TEST_F(TextInsertionTest, LandingIsMeasuredToTheMomentWhenTheTextStandsInTheField) {
    showField();
    field.lag = seconds(0.03);
    insertion.answered();
    paste("dictated");
    advance(1);
    EXPECT_EQ(logged("tirra-landed"), QStringList{"[tirra-landed] pasted 180 ms after the final line"});
}

TEST_F(TextInsertionTest, LandingInAFieldThatCannotBeReadIsMeasuredToTheLastRequest) {
    insertion.answered();
    paste("dictated");
    advance(2);
    EXPECT_EQ(logged("tirra-landed"),
              QStringList{"[tirra-landed] pasted 150 ms after the final line (asked for, not read back)"});
}

TEST_F(TextInsertionTest, LandingIsMeasuredOnce) {
    showField();
    insertion.answered();
    paste("dictated");
    insertion.typed();
    advance(2);
    EXPECT_EQ(logged("tirra-landed").size(), 1);
}

TEST_F(TextInsertionTest, ClipboardIsGivenBackAfterItsTime) {
    paste("dictated");
    advance(1.59);
    EXPECT_TRUE(pasteboard.isLent());
    advance(0.01);
    EXPECT_FALSE(pasteboard.isLent());
    EXPECT_EQ(pasteboard.text(), "mine");
    EXPECT_EQ(unanswered, 0);
}

TEST_F(TextInsertionTest, EveryItemAndTypeIsGivenBack) {
    PasteboardSnapshot before;
    before.items.append(QMap<QString, QByteArray>{{"image/png", QByteArray("\0\x89PNG", 5)},
                                                  {FakePasteboard::textType, "caption"}});
    before.items.append(QMap<QString, QByteArray>{{"text/html", "<b>"}});
    pasteboard.copyElsewhere(before);
    paste("dictated");
    advance(2);
    EXPECT_EQ(pasteboard.items(), before.items);
}

TEST_F(TextInsertionTest, EmptyClipboardIsGivenBackEmpty) {
    pasteboard.copyElsewhere(PasteboardSnapshot());
    paste("dictated");
    advance(2);
    EXPECT_TRUE(pasteboard.items().isEmpty());
    EXPECT_FALSE(pasteboard.isLent());
}

TEST_F(TextInsertionTest, CopyOfTheUserMeanwhileIsKept) {
    paste("dictated");
    advance(1);
    pasteboard.copyElsewhere("copied");
    advance(5);
    EXPECT_EQ(pasteboard.text(), "copied");
}

TEST_F(TextInsertionTest, CopyOfTheSameTextCountsAsUnchanged) {
    paste("dictated");
    advance(1);
    pasteboard.copyElsewhere("dictated");
    advance(1);
    EXPECT_EQ(pasteboard.text(), "mine");
}

TEST_F(TextInsertionTest, HungOwnerCostsHalfASecondAndNothingFalseIsPutBack) {
    pasteboard.ownerHangs = true;
    startPaste("dictated");
    advance(0.5);
    EXPECT_TRUE(pasteboard.isLent());
    advance(0.15);
    EXPECT_EQ(pasted, QStringList{"dictated"});
    advance(3);
    EXPECT_FALSE(pasteboard.isLent());
    EXPECT_EQ(pasteboard.text(), "dictated");
    EXPECT_EQ(unanswered, 0);
}

TEST_F(TextInsertionTest, RequestOfTheTargetIsLoggedWithItsDelay) {
    pasteKeys.onPosted = nullptr;
    paste("dictated");
    advance(0.004);
    pasteboard.pasteInto(editor);
    advance(2);
    EXPECT_EQ(logged("tirra-paste"),
              QStringList{"[tirra-paste] Editor took the text, asking last 4 ms after the keys"});
}

TEST_F(TextInsertionTest, TextThatNobodyAskedForStaysOnTheClipboard) {
    pasteKeys.onPosted = nullptr;
    paste("dictated");
    advance(1.6);
    EXPECT_EQ(pasteboard.text(), "dictated");
    EXPECT_FALSE(pasteboard.isLent());
    EXPECT_EQ(unanswered, 1);
    EXPECT_EQ(logged("tirra-paste"),
              QStringList{"[tirra-paste] Editor did not ask for the text: it stays on the clipboard"});
}

TEST_F(TextInsertionTest, RequestBeforeTheKeysProvesNothing) {
    pasteKeys.onPosted = nullptr;
    startPaste("dictated");
    advance(0.1);
    pasteboard.pasteInto(editor);
    advance(2);
    EXPECT_EQ(unanswered, 1);
}

TEST_F(TextInsertionTest, RequestsOfOthersProveNothing) {
    pasteKeys.onPosted = [this] { pasteboard.pasteInto(7); };
    paste("dictated");
    advance(2);
    EXPECT_EQ(unanswered, 1);
}

TEST_F(TextInsertionTest, KeysLearnWhenTheTargetHasAskedForTheText) {
    pasteKeys.waitsForEffect = true;
    pasteKeys.onPosted = [this] { pasteboard.pasteInto(7); };
    startPaste("dictated");
    advance(0.1);
    pasteboard.pasteInto(editor); // before the keys
    advance(0.1);
    EXPECT_FALSE(outcome);
    pasteboard.pasteInto(editor);
    advance(0.005);
    EXPECT_EQ(outcome, PasteOutcome{});
}

TEST_F(TextInsertionTest, ReturnWaitsUntilTheTargetHasBeenQuiet) {
    paste("dictated");
    advance(1.55);
    pasteboard.pasteInto(editor);
    advance(0.14);
    pasteboard.pasteInto(editor);
    advance(0.149);
    EXPECT_TRUE(pasteboard.isLent());
    advance(0.001);
    EXPECT_FALSE(pasteboard.isLent());
    EXPECT_EQ(pasteboard.text(), "mine");
}

TEST_F(TextInsertionTest, TargetThatNeverStopsAskingDoesNotKeepTheClipboard) {
    paste("dictated");
    for (int i = 0; i < 70; ++i) {
        advance(0.1);
        pasteboard.pasteInto(editor);
    }
    EXPECT_FALSE(pasteboard.isLent());
    EXPECT_EQ(pasteboard.text(), "mine");
}

TEST_F(TextInsertionTest, KeysThatFailAreReportedAndTheClipboardIsReturnedAllTheSame) {
    pasteKeys.outcome = KeysOutcome::notPosted;
    paste("dictated");
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->kind, Outcome::failed);
    EXPECT_EQ(outcome->reason, "paste event failed");
    advance(1.6);
    EXPECT_FALSE(pasteboard.isLent());
}

TEST_F(TextInsertionTest, CancelledPasteGoesOnOnceTheClipboardIsBorrowed) {
    startPaste("dictated");
    advance(0.05);
    task.cancel();
    EXPECT_TRUE(task.isRunning());
    advance(0.1);
    EXPECT_EQ(pasted, QStringList{"dictated"});
    EXPECT_FALSE(task.isRunning());
    advance(2);
    EXPECT_EQ(pasteboard.text(), "mine");
}

TEST_F(TextInsertionTest, CancellationBeforeThatTouchesNothing) {
    pasteboard.ownerHangs = true;
    startPaste("dictated");
    advance(0.3);
    task.cancel();
    EXPECT_FALSE(task.isRunning());
    advance(5);
    EXPECT_EQ(pasteboard.writes, 0);
    EXPECT_TRUE(pasteKeys.posted.empty());
}

TEST_F(TextInsertionTest, TwoQuickPastesLeaveTheFirstTextWhichTheSecondFound) {
    paste("one");
    advance(0.5);
    paste("two");
    EXPECT_EQ(pasted, (QStringList{"one", "two"}));
    advance(1.2);
    EXPECT_TRUE(pasteboard.isLent());
    advance(1);
    EXPECT_EQ(pasteboard.text(), "one");
}

TEST_F(TextInsertionTest, TwoQuickPastesOfTheSameTextGiveTheOldContentBack) {
    paste("same");
    advance(0.5);
    paste("same");
    advance(0.94);
    EXPECT_TRUE(pasteboard.isLent());
    advance(1);
    EXPECT_EQ(pasteboard.text(), "mine");
    EXPECT_EQ(unanswered, 0);
}

TEST_F(TextInsertionTest, HandedOverTextStaysThoughALoanWasOut) {
    paste("dictated");
    insertion.handOver("dictated");
    advance(5);
    EXPECT_EQ(pasteboard.text(), "dictated");
}

} // namespace

} // namespace lorvane
