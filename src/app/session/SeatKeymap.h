// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/wayland/WaylandConnection.h"
#include "platform/linux/wayland/WaylandSeat.h"
#include "platform/linux/x11/Xkb.h"

#include <QByteArray>

namespace lorvane {

/// The keymap of the seat, as the compositor tells it to every client. Which of its layouts is in force is
/// told only to the client that has the focus. Main thread.
class SeatKeymap {
 public:
    SeatKeymap(WaylandConnection& connection, WaylandSeat& seat);
    SeatKeymap(const SeatKeymap&) = delete;
    SeatKeymap& operator=(const SeatKeymap&) = delete;

    /// Null when there is none, or none that can be read.
    [[nodiscard]] XkbKeymap read() const;

 private:
    static const wl_keyboard_listener listener;
    void follow();
    void takeKeymap(std::uint32_t format, int descriptor, std::uint32_t size);

    WaylandSeat& seat_;
    XkbContext context_;
    QByteArray text_;
    WaylandOwned<wl_keyboard> keyboard_;
    Handle capabilitiesChanged_;
    Handle lost_;
};

} // namespace lorvane
