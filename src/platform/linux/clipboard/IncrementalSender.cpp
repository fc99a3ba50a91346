// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/clipboard/IncrementalSender.h"

#include <algorithm>

namespace lorvane {

namespace {
constexpr qsizetype usualPiece = 256 * 1024;
constexpr std::size_t mostTransfers = 64;
constexpr Duration patience = seconds(5);
} // namespace

IncrementalSender::IncrementalSender(XcbConnection& connection, Clock& clock)
    : connection_(connection), clock_(clock),
      pieceBytes_(std::min(usualPiece, connection.mostBytesInRequest()) / 4 * 4),
      events_(connection.foreign.subscribe([this](const auto& event) { onEvent(event); })) {}

IncrementalSender::~IncrementalSender() = default;

bool IncrementalSender::isTooBigForOnePiece(const QByteArray& bytes) const {
    return bytes.size() > pieceBytes_;
}

bool IncrementalSender::begin(xcb_window_t requestor, xcb_atom_t property, const TypedBytes& content) {
    const Place place{requestor, property};
    if (transfers_.size() >= mostTransfers && !transfers_.contains(place)) {
        return false;
    }
    watch(requestor, true);
    auto& transfer = transfers_[place];
    transfer = Transfer{content, connection_.atom(content.propertyType), 0, false, {}};
    const auto atLeast = static_cast<std::uint32_t>(content.bytes.size());
    xcb_change_property(connection_.raw(), XCB_PROP_MODE_REPLACE, requestor, property,
                        connection_.atom(QStringLiteral("INCR")), 32, 1, &atLeast);
    wait(place);
    return true;
}

void IncrementalSender::onEvent(const xcb_generic_event_t& event) {
    const auto kind = event.response_type & 0x7f;
    if (kind == XCB_DESTROY_NOTIFY) {
        endAll(reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window);
    } else if (kind == XCB_PROPERTY_NOTIFY) {
        const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (change.state == XCB_PROPERTY_DELETE) {
            sendNext({change.window, change.atom});
        }
    }
}

void IncrementalSender::sendNext(const Place& place) {
    const auto found = transfers_.find(place);
    if (found == transfers_.end()) {
        return;
    }
    auto& transfer = found->second;
    if (transfer.ended) {
        end(place);
        return;
    }
    // The last piece is an empty one: it says that there is no more.
    const qsizetype size = std::min(pieceBytes_, transfer.content.bytes.size() - transfer.sent);
    const int unit = transfer.content.format / 8;
    xcb_change_property(connection_.raw(), XCB_PROP_MODE_REPLACE, place.first, place.second, transfer.type,
                        static_cast<std::uint8_t>(transfer.content.format),
                        static_cast<std::uint32_t>(size / unit),
                        transfer.content.bytes.constData() + transfer.sent);
    transfer.sent += size;
    transfer.ended = size == 0;
    wait(place);
}

void IncrementalSender::wait(const Place& place) {
    transfers_[place].patience = clock_.after(patience, [this, place] { end(place); });
}

void IncrementalSender::end(const Place& place) {
    const auto requestor = place.first; // `place` may live in what is erased
    transfers_.erase(place);
    const auto next = transfers_.lower_bound({requestor, 0});
    if (next == transfers_.end() || next->first.first != requestor) {
        watch(requestor, false);
        connection_.flush();
    }
}

void IncrementalSender::endAll(xcb_window_t requestor) {
    std::erase_if(transfers_, [&](const auto& entry) { return entry.first.first == requestor; });
}

void IncrementalSender::watch(xcb_window_t requestor, bool on) {
    const std::uint32_t mask =
        on ? XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY : XCB_EVENT_MASK_NO_EVENT;
    xcb_change_window_attributes(connection_.raw(), requestor, XCB_CW_EVENT_MASK, &mask);
}

} // namespace lorvane
