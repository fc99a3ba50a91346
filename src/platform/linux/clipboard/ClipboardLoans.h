// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/clipboard/OwnedSelection.h"

namespace lorvane {

/// The rules of a borrowed text over the two selections of a desktop, the same for every system: see
/// `Pasteboard`. Main thread.
class ClipboardLoans {
 public:
    ClipboardLoans(OwnedSelection& clipboard, OwnedSelection& primary)
        : clipboard_(clipboard), primary_(primary) {}

    /// Content that was read from the clipboard, in the form in which it can be put back.
    [[nodiscard]] PasteboardSnapshot remember(const ClipboardContent& content, bool isReadable);
    /// What the selection of the middle mouse button held then; absent when it could not be read in time.
    std::optional<ClipboardContent> primaryBefore;

    void setString(const QString& text);
    /// `isHeldBack`: until `keysGoOut`, see `ClipboardOffer::holdBack`.
    void lend(PasteboardLoan loan, bool isHeldBack);
    void keysGoOut();
    [[nodiscard]] LoanState state() const;
    void restore(const PasteboardSnapshot& snapshot);
    /// Ends a loan without anybody's snapshot; for the end of the program.
    void end();

 private:
    void returnPrimary();
    static void giveBack(OwnedSelection& selection);

    OwnedSelection& clipboard_;
    OwnedSelection& primary_;
    /// The order and the property types of what was read last; a snapshot does not carry them.
    ClipboardContent form_;
    bool isPrimaryLent_ = false;
};

} // namespace lorvane
