// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/clipboard/ClipboardOffer.h"

#include "platform/linux/clipboard/ContentTypes.h"

namespace lorvane {

namespace {

QByteArray textIn(const ClipboardContent& content) {
    if (const auto text = content.text()) {
        return text->toUtf8();
    }
    for (const TypedBytes& entry : content.types) {
        if (contenttypes::isText(entry.type)) {
            return entry.bytes; // a plain text without a charset is UTF-8 among programs of today
        }
    }
    return {};
}

} // namespace

ClipboardOffer ClipboardOffer::lent(ClipboardContent text, ProcessId target,
                                    std::optional<ClipboardContent> previous) {
    ClipboardOffer offer(std::move(text));
    offer.previous_ = std::move(previous);
    offer.target_ = target;
    offer.isLoan_ = true;
    return offer;
}

bool ClipboardOffer::isBorrower(std::optional<ProcessId> requestor) const {
    return isLoan_ && !isHeldBack_ && (target_ == 0 || !requestor || *requestor == target_);
}

const ClipboardContent& ClipboardOffer::forRequestor(std::optional<ProcessId> requestor) const {
    if (meanwhile_) {
        return *meanwhile_;
    }
    return previous_ && !isBorrower(requestor) ? *previous_ : own_;
}

void ClipboardOffer::holdBack() {
    isHeldBack_ = isLoan_;
    if (!isLoan_ || !previous_) {
        return;
    }
    // Another list of types would be another copy in everybody's eyes when the text is let out.
    ClipboardContent meanwhile = own_;
    const QByteArray text = textIn(*previous_);
    for (TypedBytes& entry : meanwhile.types) {
        if (contenttypes::isText(entry.type)) {
            const TypedBytes* const same = previous_->find(entry.type);
            entry.bytes = same != nullptr ? same->bytes : text;
        }
    }
    meanwhile_ = std::move(meanwhile);
}

} // namespace lorvane
