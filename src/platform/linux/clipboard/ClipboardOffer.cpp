// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/clipboard/ClipboardOffer.h"

namespace lorvane {

ClipboardOffer ClipboardOffer::lent(ClipboardContent text, ProcessId target,
                                    std::optional<ClipboardContent> previous) {
    ClipboardOffer offer(std::move(text));
    offer.previous_ = std::move(previous);
    offer.target_ = target;
    offer.isLoan_ = true;
    return offer;
}

bool ClipboardOffer::isBorrower(std::optional<ProcessId> requestor) const {
    return isLoan_ && (target_ == 0 || !requestor || *requestor == target_);
}

const ClipboardContent& ClipboardOffer::forRequestor(std::optional<ProcessId> requestor) const {
    return previous_ && !isBorrower(requestor) ? *previous_ : own_;
}

} // namespace lorvane
