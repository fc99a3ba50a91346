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
    /// Told when `seat` has become another or none; what was made from the seat before is of no use any more.
    [[nodiscard]] Handle onChanged(std::function<void()> changed) {
        return changed_.subscribe(std::move(changed));
    }

 private:
    void take(const WaylandGlobal& global);
    void chooseAgain();

    WaylandConnection& connection_;
    std::uint32_t name_ = 0;
    WaylandOwned<wl_seat> seat_;
    Signal<> changed_;
    Handle appeared_;
    Handle gone_;
};

} // namespace lorvane
