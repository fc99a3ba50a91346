// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "platform/linux/clipboard/ClipboardContent.h"
#include "platform/linux/clipboard/XcbConnection.h"

#include <map>
#include <utility>

namespace lorvane {

/// Sends contents that are too big for one property piece by piece, at the pace of those who asked: they
/// remove a piece and get the next (INCR; Inter-Client Communication Conventions Manual, section 2.7.2). A
/// requestor that stops removing is given up after five seconds. The bytes are shared with the content, so
/// that a transfer costs one piece of memory in the server and goes on when the content has changed
/// meanwhile. Main thread.
class IncrementalSender {
 public:
    IncrementalSender(XcbConnection& connection, Clock& clock);
    ~IncrementalSender();
    IncrementalSender(const IncrementalSender&) = delete;
    IncrementalSender& operator=(const IncrementalSender&) = delete;

    [[nodiscard]] bool isTooBigForOnePiece(const QByteArray& bytes) const;
    /// Announces the transfer in the property. False when too many are under way already.
    bool begin(xcb_window_t requestor, xcb_atom_t property, const TypedBytes& content);
    [[nodiscard]] std::size_t underWay() const { return transfers_.size(); }

 private:
    using Place = std::pair<xcb_window_t, xcb_atom_t>;
    struct Transfer {
        TypedBytes content;
        xcb_atom_t type = XCB_ATOM_NONE;
        qsizetype sent = 0;
        bool ended = false;
        Handle patience;
    };
    void onEvent(const xcb_generic_event_t& event);
    void sendNext(const Place& place);
    void wait(const Place& place);
    void end(const Place& place);
    void endAll(xcb_window_t requestor);
    void watch(xcb_window_t requestor, bool on);

    XcbConnection& connection_;
    Clock& clock_;
    qsizetype pieceBytes_;
    std::map<Place, Transfer> transfers_;
    Handle events_;
};

} // namespace lorvane
