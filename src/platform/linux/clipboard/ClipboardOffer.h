// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/clipboard/ClipboardContent.h"

namespace lorvane {

/// What a selection of ours offers, and to whom. A plain value; decides and does nothing.
class ClipboardOffer {
 public:
    ClipboardOffer() = default;
    /// The same for everyone.
    explicit ClipboardOffer(ClipboardContent content) : own_(std::move(content)) {}
    /// A text lent to the process `target`: everyone else is offered `previous`, nothing at all when that is
    /// empty. A requestor whose process cannot be told is offered the text, and so is everyone when the
    /// target itself is unknown (0). `previous` is absent when it could not be read: then everyone is offered
    /// the text as well, since a refusal makes clipboard managers take the selection over in the middle of
    /// the paste.
    static ClipboardOffer lent(ClipboardContent text, ProcessId target,
                               std::optional<ClipboardContent> previous);

    /// Where nobody tells who asks, a loan is told apart by time: until `letOut` everyone is offered the old
    /// text, or an empty one, under the types of the lent text, since programs that keep a history ask at
    /// once. Where the old content could not be read they are offered the text. Nobody counts as the target.
    void holdBack();
    void letOut() {
        isHeldBack_ = false;
        meanwhile_.reset();
    }

    [[nodiscard]] const ClipboardContent& forRequestor(std::optional<ProcessId> requestor) const;
    /// The requestor is the one that the text was lent to, as far as can be told. False for an offer to
    /// everyone.
    [[nodiscard]] bool isBorrower(std::optional<ProcessId> requestor) const;
    [[nodiscard]] bool isLoan() const { return isLoan_; }
    /// What everyone else finds while a text is lent; null without a loan or when it could not be read.
    [[nodiscard]] const ClipboardContent* previous() const { return previous_ ? &*previous_ : nullptr; }
    /// What our own program finds on the clipboard.
    [[nodiscard]] const ClipboardContent& own() const { return own_; }

 private:
    ClipboardContent own_;
    std::optional<ClipboardContent> previous_;
    /// What everyone is offered while the text is held back.
    std::optional<ClipboardContent> meanwhile_;
    ProcessId target_ = 0;
    bool isLoan_ = false;
    bool isHeldBack_ = false;
};

} // namespace lorvane
