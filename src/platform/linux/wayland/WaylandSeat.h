// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/wayland/WaylandConnection.h"

namespace lorvane {

/// The user's seat: the first one that the compositor has; the next one when it goes. Main thread.
class WaylandSeat {
 public:
    explicit WaylandSeat(WaylandConnection& connection);

    /// Null while there is none.
    [[nodiscard]] wl_seat* seat() const { return seat_.get(); }
    /// What it has now; asking a seat for what it never had is a mistake that ends the connection.
    [[nodiscard]] bool hasKeyboard() const { return (capabilities_ & WL_SEAT_CAPABILITY_KEYBOARD) != 0; }
    [[nodiscard]] bool hasPointer() const { return (capabilities_ & WL_SEAT_CAPABILITY_POINTER) != 0; }
    [[nodiscard]] Handle onCapabilitiesChanged(std::function<void()> changed) {
        return capabilitiesChanged_.subscribe(std::move(changed));
    }
    /// Told when `seat` has become another or none; what was made from the seat before is of no use any more.
    [[nodiscard]] Handle onChanged(std::function<void()> changed) {
        return changed_.subscribe(std::move(changed));
    }

 private:
    static const wl_seat_listener listener;

    void take(const WaylandGlobal& global);
    void chooseAgain();
    void setCapabilities(std::uint32_t capabilities);

    WaylandConnection& connection_;
    std::uint32_t name_ = 0;
    WaylandOwned<wl_seat> seat_;
    std::uint32_t capabilities_ = 0;
    Signal<> changed_;
    Signal<> capabilitiesChanged_;
    Handle appeared_;
    Handle gone_;
};

} // namespace lorvane
