// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/clipboard/ClipboardLoans.h"

namespace lorvane {

PasteboardSnapshot ClipboardLoans::remember(const ClipboardContent& content, bool isReadable) {
    form_ = formOf(content);
    PasteboardSnapshot snapshot = snapshotOf(content);
    snapshot.readable = isReadable;
    return snapshot;
}

void ClipboardLoans::setString(const QString& text) {
    if (isPrimaryLent_ && primary_.offer().own().text() == text) {
        primary_.replace(ClipboardOffer(contentOfText(text)));
        isPrimaryLent_ = false;
    }
    returnPrimary();
    clipboard_.take(ClipboardOffer(contentOfText(text)));
}

void ClipboardLoans::lend(PasteboardLoan loan, bool isHeldBack) {
    const auto offerOf = [&](std::optional<ClipboardContent> before) {
        auto offer = ClipboardOffer::lent(contentOfBorrowedText(loan.text), loan.target, std::move(before));
        if (isHeldBack) {
            offer.holdBack();
        }
        return offer;
    };
    std::optional<ClipboardContent> previous;
    if (loan.previous.readable) {
        previous = contentOfSnapshot(loan.previous, form_);
    }
    clipboard_.take(offerOf(std::move(previous)));
    if (loan.primaryToo) {
        primary_.take(offerOf(primaryBefore));
        isPrimaryLent_ = true;
    } else {
        returnPrimary(); // an earlier loan's, if it is still out
    }
}

void ClipboardLoans::keysGoOut() {
    clipboard_.keysGoOut();
    primary_.keysGoOut();
}

LoanState ClipboardLoans::state() const {
    LoanState state{clipboard_.lastRequest(), clipboard_.isLost()};
    if (isPrimaryLent_ && primary_.lastRequest() > state.lastRequest) {
        state.lastRequest = primary_.lastRequest();
    }
    return state;
}

void ClipboardLoans::restore(const PasteboardSnapshot& snapshot) {
    returnPrimary();
    if (!snapshot.readable) {
        if (clipboard_.isOwned()) {
            clipboard_.replace(ClipboardOffer(clipboard_.offer().own()));
        }
    } else if (snapshot.items.isEmpty()) {
        clipboard_.release();
    } else {
        const auto* previous = clipboard_.offer().previous();
        clipboard_.replace(ClipboardOffer(contentOfSnapshot(snapshot, previous ? *previous : form_)));
    }
}

void ClipboardLoans::end() {
    returnPrimary();
    giveBack(clipboard_);
}

void ClipboardLoans::returnPrimary() {
    if (isPrimaryLent_) {
        isPrimaryLent_ = false;
        giveBack(primary_);
    }
}

void ClipboardLoans::giveBack(OwnedSelection& selection) {
    if (!selection.isOwned() || !selection.offer().isLoan()) {
        return;
    }
    const auto* previous = selection.offer().previous();
    if (previous == nullptr) {
        selection.replace(ClipboardOffer(selection.offer().own()));
    } else if (previous->isEmpty()) {
        selection.release();
    } else {
        selection.replace(ClipboardOffer(*previous));
    }
}

} // namespace lorvane
