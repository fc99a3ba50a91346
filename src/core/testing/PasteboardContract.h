// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Pasteboard.h"

#include <gtest/gtest.h>

namespace lorvane {

/// What every pasteboard keeps. `Desktop` is default constructible, with an empty clipboard, and has `clock`;
/// `pasteboard()`; `snapshot()` and `string()`, which run a read to its end; `copyElsewhere(text)` (the
/// pasteboard has heard of it on return) and `hangOwner()`, which are about another program's clipboard; and
/// `target()`, a process that pastes with `pasteIntoTarget()`, while `pasteIntoAnother()` is a process that
/// no loan is for: the text that is found there. `tellsWhoAsks` is false where the system does not name the
/// process behind a request: then everyone is served a lent text once its target has begun to ask.
template <typename Desktop>
class PasteboardContract : public ::testing::Test {
 protected:
    using Text = std::optional<QString>;

    void lend(const QString& text, ProcessId target, const PasteboardSnapshot& previous) {
        PasteboardLoan loan;
        loan.text = text;
        loan.target = target;
        loan.previous = previous;
        desktop.pasteboard().lend(loan);
    }
    /// A text lent over the old content, which is handed back.
    PasteboardSnapshot lendOver(const QString& old, const QString& text) {
        desktop.copyElsewhere(old);
        const PasteboardSnapshot held = desktop.snapshot();
        lend(text, desktop.target(), held);
        return held;
    }
    LoanState state() { return desktop.pasteboard().loanState(); }
    void expectForAll(const Text& text) {
        EXPECT_EQ(desktop.pasteIntoTarget(), text);
        EXPECT_EQ(desktop.pasteIntoAnother(), text);
        EXPECT_EQ(desktop.string(), text);
    }

    Desktop desktop;
};
TYPED_TEST_SUITE_P(PasteboardContract);

TYPED_TEST_P(PasteboardContract, EmptyClipboardHoldsNothing) {
    const PasteboardSnapshot held = this->desktop.snapshot();
    EXPECT_TRUE(held.readable);
    EXPECT_TRUE(held.items.isEmpty());
    EXPECT_EQ(this->desktop.string(), std::nullopt);
}

TYPED_TEST_P(PasteboardContract, CopyOfAnotherProgramIsRead) {
    this->desktop.copyElsewhere("copied");
    EXPECT_EQ(this->desktop.string(), "copied");
    const PasteboardSnapshot held = this->desktop.snapshot();
    EXPECT_TRUE(held.readable);
    EXPECT_EQ(held.items.size(), 1);
}

TYPED_TEST_P(PasteboardContract, TextThatIsSetIsThereForEveryoneAndIsNoLoan) {
    this->desktop.copyElsewhere("copied");
    this->desktop.pasteboard().setString("set");
    this->expectForAll("set");
    EXPECT_FALSE(this->state().lost);
    EXPECT_EQ(this->state().lastRequest, std::nullopt);
}

TYPED_TEST_P(PasteboardContract, LentTextIsForItsTargetAndTheOldContentForOthers) {
    this->lendOver("old", "lent");
    EXPECT_EQ(this->desktop.pasteIntoAnother(), "old");
    EXPECT_EQ(this->desktop.pasteIntoTarget(), "lent");
    EXPECT_EQ(this->desktop.pasteIntoAnother(), TypeParam::tellsWhoAsks ? "old" : "lent");
    EXPECT_EQ(this->desktop.string(), "lent");
    EXPECT_FALSE(this->state().lost);
}

TYPED_TEST_P(PasteboardContract, OthersFindNothingWhileATextIsLentOverAnEmptyClipboard) {
    this->lend("lent", this->desktop.target(), this->desktop.snapshot());
    EXPECT_EQ(this->desktop.pasteIntoAnother(), std::nullopt);
    EXPECT_EQ(this->desktop.pasteIntoTarget(), "lent");
}

TYPED_TEST_P(PasteboardContract, OnlyTheTargetsRequestCounts) {
    this->lendOver("old", "lent");
    this->desktop.pasteIntoAnother();
    EXPECT_EQ(this->state().lastRequest, std::nullopt);
    const Instant before = this->desktop.clock.now();
    this->desktop.pasteIntoTarget();
    ASSERT_TRUE(this->state().lastRequest);
    EXPECT_GE(*this->state().lastRequest, before);
    EXPECT_LE(*this->state().lastRequest, this->desktop.clock.now());
}

TYPED_TEST_P(PasteboardContract, WithoutAKnownTargetEveryoneIsServedAndCounts) {
    this->desktop.copyElsewhere("old");
    this->lend("lent", 0, this->desktop.snapshot());
    if constexpr (!TypeParam::tellsWhoAsks) {
        EXPECT_EQ(this->desktop.pasteIntoAnother(), "old") << "before the keys";
        EXPECT_EQ(this->desktop.pasteIntoTarget(), "lent");
    }
    EXPECT_EQ(this->desktop.pasteIntoAnother(), "lent");
    EXPECT_TRUE(this->state().lastRequest);
    EXPECT_EQ(this->desktop.pasteIntoTarget(), "lent");
}

TYPED_TEST_P(PasteboardContract, NewLoanKnowsNothingOfTheRequestsForTheOneBefore) {
    const PasteboardSnapshot held = this->lendOver("old", "one");
    this->desktop.pasteIntoTarget();
    EXPECT_TRUE(this->state().lastRequest);
    this->lend("two", this->desktop.target(), held);
    EXPECT_EQ(this->state().lastRequest, std::nullopt);
    EXPECT_EQ(this->desktop.pasteIntoTarget(), "two");
}

TYPED_TEST_P(PasteboardContract, SnapshotDuringALoanHoldsTheLentText) {
    this->lendOver("old", "one");
    const PasteboardSnapshot held = this->desktop.snapshot();
    this->lend("two", this->desktop.target(), held);
    EXPECT_EQ(this->desktop.pasteIntoAnother(), "one");
    this->desktop.pasteboard().restore(held);
    this->expectForAll("one");
}

TYPED_TEST_P(PasteboardContract, RestorePutsTheOldContentBackForEveryone) {
    const PasteboardSnapshot held = this->lendOver("old", "lent");
    this->desktop.pasteIntoTarget();
    this->desktop.pasteboard().restore(held);
    this->expectForAll("old");
    EXPECT_EQ(this->desktop.snapshot().items, held.items);
    EXPECT_FALSE(this->state().lost);
    EXPECT_EQ(this->state().lastRequest, std::nullopt) << "the loan is over";
}

TYPED_TEST_P(PasteboardContract, RestoringAnEmptyClipboardEmptiesIt) {
    const PasteboardSnapshot held = this->desktop.snapshot();
    this->lend("lent", this->desktop.target(), held);
    this->desktop.pasteIntoTarget();
    this->desktop.pasteboard().restore(held);
    this->expectForAll(std::nullopt);
    EXPECT_FALSE(this->state().lost);
    EXPECT_EQ(this->state().lastRequest, std::nullopt);
}

TYPED_TEST_P(PasteboardContract, HungOwnerIsNotReadableAndItsLoanStaysForEveryone) {
    this->desktop.copyElsewhere("old");
    this->desktop.hangOwner();
    const PasteboardSnapshot held = this->desktop.snapshot();
    EXPECT_FALSE(held.readable);
    this->lend("lent", this->desktop.target(), held);
    EXPECT_EQ(this->desktop.pasteIntoAnother(), "lent");
    EXPECT_EQ(this->state().lastRequest, std::nullopt);
    this->desktop.pasteboard().restore(held);
    this->expectForAll("lent");
}

TYPED_TEST_P(PasteboardContract, CopyOfAnotherProgramEndsTheLoanAndStays) {
    const PasteboardSnapshot held = this->lendOver("old", "lent");
    this->desktop.copyElsewhere("newer");
    EXPECT_TRUE(this->state().lost);
    EXPECT_EQ(this->desktop.pasteIntoTarget(), "newer");
    EXPECT_EQ(this->state().lastRequest, std::nullopt);
    this->desktop.pasteboard().restore(held);
    EXPECT_TRUE(this->state().lost);
    this->expectForAll("newer");
}

TYPED_TEST_P(PasteboardContract, NeitherAnEmptyNorAnUnreadSnapshotTakesACopyAway) {
    this->lendOver("old", "lent");
    this->desktop.copyElsewhere("newer");
    this->desktop.pasteboard().restore(PasteboardSnapshot());
    EXPECT_EQ(this->desktop.pasteIntoAnother(), "newer");
    PasteboardSnapshot unread;
    unread.readable = false;
    this->desktop.pasteboard().restore(unread);
    this->expectForAll("newer");
}

TYPED_TEST_P(PasteboardContract, CopyWhoseTextWasReadMayBeReplaced) {
    const PasteboardSnapshot held = this->lendOver("old", "lent");
    this->desktop.copyElsewhere("lent");
    EXPECT_EQ(this->desktop.string(), "lent");
    this->desktop.pasteboard().restore(held);
    this->expectForAll("old");
    EXPECT_FALSE(this->state().lost);
}

TYPED_TEST_P(PasteboardContract, CopyWhoseTextWasReadMayBeCleared) {
    const PasteboardSnapshot held = this->desktop.snapshot();
    this->lend("lent", this->desktop.target(), held);
    this->desktop.copyElsewhere("lent");
    EXPECT_EQ(this->desktop.string(), "lent");
    this->desktop.pasteboard().restore(held);
    this->expectForAll(std::nullopt);
}

TYPED_TEST_P(PasteboardContract, CopyAfterTheOneThatWasReadStays) {
    const PasteboardSnapshot held = this->lendOver("old", "lent");
    this->desktop.copyElsewhere("lent");
    EXPECT_EQ(this->desktop.string(), "lent");
    this->desktop.copyElsewhere("newer");
    this->desktop.pasteboard().restore(held);
    this->expectForAll("newer");
}

TYPED_TEST_P(PasteboardContract, WhatIsLentOrSetTakesTheClipboardBack) {
    const PasteboardSnapshot held = this->lendOver("old", "one");
    this->desktop.copyElsewhere("newer");
    this->lend("two", this->desktop.target(), held);
    EXPECT_FALSE(this->state().lost);
    EXPECT_EQ(this->desktop.pasteIntoTarget(), "two");
    this->desktop.copyElsewhere("newest");
    EXPECT_TRUE(this->state().lost);
    this->desktop.pasteboard().setString("set");
    EXPECT_FALSE(this->state().lost);
    this->expectForAll("set");
}

TYPED_TEST_P(PasteboardContract, SetTextEndsALoanAndStaysUntilItIsReplaced) {
    const PasteboardSnapshot held = this->lendOver("old", "lent");
    this->desktop.pasteIntoTarget();
    this->desktop.pasteboard().setString("lent");
    EXPECT_EQ(this->state().lastRequest, std::nullopt);
    this->expectForAll("lent");
    EXPECT_EQ(this->state().lastRequest, std::nullopt);
    this->desktop.pasteboard().restore(held);
    this->expectForAll("old");
}

REGISTER_TYPED_TEST_SUITE_P(
    PasteboardContract, EmptyClipboardHoldsNothing, CopyOfAnotherProgramIsRead,
    TextThatIsSetIsThereForEveryoneAndIsNoLoan, LentTextIsForItsTargetAndTheOldContentForOthers,
    OthersFindNothingWhileATextIsLentOverAnEmptyClipboard, OnlyTheTargetsRequestCounts,
    WithoutAKnownTargetEveryoneIsServedAndCounts, NewLoanKnowsNothingOfTheRequestsForTheOneBefore,
    SnapshotDuringALoanHoldsTheLentText, RestorePutsTheOldContentBackForEveryone,
    RestoringAnEmptyClipboardEmptiesIt, HungOwnerIsNotReadableAndItsLoanStaysForEveryone,
    CopyOfAnotherProgramEndsTheLoanAndStays, NeitherAnEmptyNorAnUnreadSnapshotTakesACopyAway,
    CopyWhoseTextWasReadMayBeReplaced, CopyWhoseTextWasReadMayBeCleared, CopyAfterTheOneThatWasReadStays,
    WhatIsLentOrSetTakesTheClipboardBack, SetTextEndsALoanAndStaysUntilItIsReplaced);

} // namespace lorvane
