// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11KeyTable.h"
#include "platform/linux/x11/Xkb.h"

#include <functional>

namespace lorvane {

/// Tells that the keys of the core keyboard have got another meaning: another layout, another keyboard. Main
/// thread.
class KeymapWatch {
 public:
    /// `isOfNoConcern`: whether changes of that key alone do not count.
    KeymapWatch(X11Connection& connection, std::function<bool(XKeyCode)> isOfNoConcern);
    KeymapWatch(const KeymapWatch&) = delete;
    KeymapWatch& operator=(const KeymapWatch&) = delete;
    ~KeymapWatch() = default;

    /// Whether there was a change since the last call; true at first.
    [[nodiscard]] bool takeChange() { return std::exchange(changed_, false); }

 private:
    void handleEvent(const xcb_generic_event_t& event);
    [[nodiscard]] bool concerns(const xcb_xkb_map_notify_event_t& change) const;

    std::function<bool(XKeyCode)> isOfNoConcern_;
    std::uint8_t firstXkbEvent_ = 0;
    bool changed_ = true;
    Handle events_;
};

} // namespace lorvane
