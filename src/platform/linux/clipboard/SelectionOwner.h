// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "platform/linux/clipboard/IncrementalSender.h"
#include "platform/linux/clipboard/OwnedSelection.h"
#include "platform/linux/clipboard/XcbConnection.h"

#include <optional>

namespace lorvane {

/// A selection of the X server: answers those who ask for its content (Inter-Client Communication Conventions
/// Manual, section 2.2). Main thread.
class SelectionOwner final : public OwnedSelection {
 public:
    SelectionOwner(XcbConnection& connection, IncrementalSender& sender, Clock& clock,
                   const QString& selection);
    ~SelectionOwner() override;
    SelectionOwner(const SelectionOwner&) = delete;
    SelectionOwner& operator=(const SelectionOwner&) = delete;

    void take(ClipboardOffer offer) override;
    void replace(ClipboardOffer offer) override;
    void release() override;

    /// Counts the changes of the selection that are known here. A reader notes it first and hands it back
    /// with what it read.
    [[nodiscard]] std::uint32_t changeCount() const { return changeCount_; }
    void markRead(std::uint32_t changeCount) { readAt_ = changeCount; }

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
    /// The server's time of the last change that is known; XCB_CURRENT_TIME until the server has told it.
    xcb_timestamp_t since_ = XCB_CURRENT_TIME;
    std::uint32_t takenByRequest_ = 0;
    std::uint32_t changeCount_ = 0;
    std::optional<std::uint32_t> readAt_;
    Handle changes_;
    Handle events_;
};

} // namespace lorvane
