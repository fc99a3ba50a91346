// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/clipboard/SelectionConversion.h"

#include <algorithm>
#include <cstring>

namespace lorvane {

SelectionConversion::SelectionConversion(XcbConnection& connection, Clock& clock, ConversionRequest request)
    : connection_(connection), clock_(clock), request_(request),
      property_(connection.atom(QStringLiteral("LORVANE_READ"))) {}

Completion<ConversionOutcome> SelectionConversion::start() {
    events_ = connection_.handle(request_.window, [this](const auto& event) { onEvent(event); });
    changes_ = connection_.selectionChanged.subscribe([this](const auto& change) { onChange(change); });
    xcb_delete_property(connection_.raw(), request_.window, property_);
    number_ = xcb_convert_selection(connection_.raw(), request_.window, request_.selection, request_.target,
                                    property_, XCB_CURRENT_TIME)
                  .sequence;
    if (request_.since == 0) {
        request_.since = number_;
    }
    connection_.flush();
    waitOn();
    return done_;
}

void SelectionConversion::onEvent(const xcb_generic_event_t& event) {
    const auto kind = event.response_type & 0x7f;
    if (kind == XCB_SELECTION_NOTIFY) {
        onAnswer(reinterpret_cast<const xcb_selection_notify_event_t&>(event));
    } else if (kind == XCB_PROPERTY_NOTIFY && inPieces_) {
        const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (change.atom == property_ && change.state == XCB_PROPERTY_NEW_VALUE) {
            onPiece();
        }
    }
}

void SelectionConversion::onAnswer(const xcb_selection_notify_event_t& answer) {
    if (answer.selection != request_.selection || answer.target != request_.target || inPieces_) {
        return;
    }
    if (answer.property == XCB_ATOM_NONE) {
        finish(ConversionOutcome::refused);
        return;
    }
    content_ = connection_.property(request_.window, property_, request_.mostBytes, true);
    if (!content_.exists) {
        finish(ConversionOutcome::refused);
    } else if (content_.type == connection_.atom(QStringLiteral("INCR"))) {
        std::uint32_t atLeast = 0;
        std::memcpy(&atLeast, content_.bytes.constData(),
                    std::min<std::size_t>(sizeof atLeast, static_cast<std::size_t>(content_.bytes.size())));
        if (atLeast > request_.mostBytes) {
            finish(ConversionOutcome::tooBig);
            return;
        }
        content_ = WindowProperty();
        content_.bytes.reserve(atLeast);
        inPieces_ = true;
        waitOn();
    } else {
        const bool isTooBig = content_.cut || content_.bytes.size() > request_.mostBytes;
        finish(isTooBig ? ConversionOutcome::tooBig : ConversionOutcome::data);
    }
}

void SelectionConversion::onPiece() {
    const qsizetype room = request_.mostBytes - content_.bytes.size();
    const auto piece = connection_.property(request_.window, property_, room, true);
    if (!piece.exists) {
        return;
    }
    if (piece.bytes.isEmpty() && !piece.cut) {
        finish(ConversionOutcome::data);
        return;
    }
    if (piece.cut || piece.bytes.size() > room) {
        finish(ConversionOutcome::tooBig);
        return;
    }
    content_.exists = true;
    content_.type = piece.type;
    content_.format = piece.format;
    content_.bytes.append(piece.bytes);
    connection_.flush();
    waitOn();
}

void SelectionConversion::onChange(const SelectionChange& change) {
    if (change.selection == request_.selection &&
        static_cast<std::int32_t>(change.afterRequest - request_.since) >= 0) {
        finish(ConversionOutcome::ownerChanged);
    }
}

void SelectionConversion::waitOn() {
    const Duration left = std::max<Duration>(request_.end - clock_.now(), Duration::zero());
    timer_ = clock_.after(std::min(request_.patience, left), [this] { finish(ConversionOutcome::silent); });
}

void SelectionConversion::finish(ConversionOutcome outcome) {
    // Whoever waits may end this object inside the call: nothing of it is touched afterwards.
    const auto done = done_;
    done.complete(outcome);
}

} // namespace lorvane
