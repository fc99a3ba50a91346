// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "platform/linux/clipboard/ClipboardOffer.h"
#include "platform/linux/clipboard/IncrementalSender.h"
#include "platform/linux/clipboard/XcbConnection.h"

#include <optional>

namespace lorvane {

/// Owns one selection (the clipboard, or that of the middle mouse button) while it may, and answers those who
/// ask for its content (Inter-Client Communication Conventions Manual, section 2.2). Main thread.
class SelectionOwner {
 public:
    SelectionOwner(XcbConnection& connection, IncrementalSender& sender, Clock& clock,
                   const QString& selection);
    ~SelectionOwner();
    SelectionOwner(const SelectionOwner&) = delete;
    SelectionOwner& operator=(const SelectionOwner&) = delete;

    /// Takes the selection from whoever has it.
    void take(ClipboardOffer offer);
    /// Offers something else and tells everyone who watches the selection. Nothing happens when another
    /// program has taken it, even when that news is still on its way.
    void replace(ClipboardOffer offer);
    /// Leaves the selection without an owner, with the same reserve.
    void release();

    /// Counts the changes of the selection that are known here. A reader notes it first and hands it back
    /// with what it read.
    [[nodiscard]] std::uint32_t changeCount() const { return changeCount_; }
    void markRead(std::uint32_t changeCount) { readAt_ = changeCount; }

    [[nodiscard]] bool isOwned() const { return isOwned_; }
    /// Another program has taken the selection since it was ours.
    [[nodiscard]] bool isLost() const { return isLost_; }
    [[nodiscard]] const ClipboardOffer& offer() const { return offer_; }
    /// When the process that the text was lent to last asked for it.
    [[nodiscard]] std::optional<Instant> lastRequest() const { return lastRequest_; }
    [[nodiscard]] xcb_atom_t selection() const { return selection_; }

 private:
    void waitForServer();
    void setOwned(ClipboardOffer offer);
    void lose();
    [[nodiscard]] bool mayReplace();
    void onChange(const SelectionChange& change);
    void onEvent(const xcb_generic_event_t& event);
    void answer(const xcb_selection_request_event_t& request);
    [[nodiscard]] bool convert(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property,
                               std::optional<ProcessId> process);
    [[nodiscard]] bool convertMultiple(xcb_window_t requestor, xcb_atom_t property,
                                       std::optional<ProcessId> process);
    void writeTargets(xcb_window_t requestor, xcb_atom_t property, const ClipboardContent& content);
    [[nodiscard]] bool write(xcb_window_t requestor, xcb_atom_t property, const TypedBytes& content);
    [[nodiscard]] xcb_timestamp_t justAfterLastChange() const;

    XcbConnection& connection_;
    IncrementalSender& sender_;
    Clock& clock_;
    xcb_atom_t selection_;
    xcb_window_t window_;
    ClipboardOffer offer_;
    bool isOwned_ = false;
    bool isLost_ = false;
    /// The server's time of the last change that is known; XCB_CURRENT_TIME until the server has told it.
    xcb_timestamp_t since_ = XCB_CURRENT_TIME;
    std::uint32_t takenByRequest_ = 0;
    std::uint32_t changeCount_ = 0;
    std::optional<std::uint32_t> readAt_;
    std::optional<Instant> lastRequest_;
    Handle changes_;
    Handle events_;
};

} // namespace lorvane
