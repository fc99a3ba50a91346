// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "base/Task.h"
#include "platform/linux/clipboard/XcbConnection.h"

namespace lorvane {

/// How a request for one type of a selection's content ended.
enum class ConversionOutcome {
    data,
    refused,      ///< the owner does not have this type, or there is no owner
    silent,       ///< the owner did not answer, or stopped in the middle
    tooBig,       ///< more bytes than there was room for
    ownerChanged, ///< the selection has got new content meanwhile
};

/// What is asked, and with which bounds.
struct ConversionRequest {
    xcb_window_t window = XCB_WINDOW_NONE;
    xcb_atom_t selection = XCB_ATOM_NONE;
    xcb_atom_t target = XCB_ATOM_NONE;
    qsizetype mostBytes = 0;
    /// The longest silence of the owner, and the end of all waiting.
    Duration patience = Duration::zero();
    Instant end;
    /// Changes of the selection before this request of ours do not count; 0: before the conversion itself.
    std::uint32_t since = 0;
};

/// One request for one type, whole or piece by piece (INCR). Main thread.
class SelectionConversion {
 public:
    SelectionConversion(XcbConnection& connection, Clock& clock, ConversionRequest request);
    SelectionConversion(const SelectionConversion&) = delete;
    SelectionConversion& operator=(const SelectionConversion&) = delete;

    /// Asks the owner. The outcome comes once, never inside this call.
    [[nodiscard]] Completion<ConversionOutcome> start();
    /// The content, when the outcome was `data`.
    [[nodiscard]] const WindowProperty& content() const { return content_; }
    /// The number of the request that asked for it.
    [[nodiscard]] std::uint32_t number() const { return number_; }

 private:
    void onEvent(const xcb_generic_event_t& event);
    void onAnswer(const xcb_selection_notify_event_t& answer);
    void onPiece();
    void onChange(const SelectionChange& change);
    void waitOn();
    void finish(ConversionOutcome outcome);

    XcbConnection& connection_;
    Clock& clock_;
    ConversionRequest request_;
    xcb_atom_t property_;
    std::uint32_t number_ = 0;
    bool inPieces_ = false;
    WindowProperty content_;
    Completion<ConversionOutcome> done_;
    Handle timer_;
    Handle changes_;
    Handle events_;
};

} // namespace lorvane
