// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "platform/linux/wayland/WaylandConnection.h"
#include "platform/linux/wayland/WaylandSeat.h"

#include <QByteArray>

#include <cstdint>

#include <virtual-keyboard-unstable-v1-client-protocol.h>

namespace lorvane {

/// A keyboard of our own beside the user's, made at its first use. What the user holds on another keyboard
/// does not mix with it, and the next key of the user's brings the user's layout back by itself. Main thread.
///
/// It lives until the program ends: sway (1.7, as tried) is left without a keyboard when the one that was
/// used last goes, and a Chromium that starts before the user's next key crashes by that.
class VirtualKeyboard {
 public:
    VirtualKeyboard(WaylandConnection& connection, WaylandSeat& seat, Clock& clock);
    VirtualKeyboard(const VirtualKeyboard&) = delete;
    VirtualKeyboard& operator=(const VirtualKeyboard&) = delete;

    /// The compositor has keyboards to play, and a seat that they could belong to.
    [[nodiscard]] bool isOffered() const;
    /// Keys have this meaning from now on (text of an XKB keymap). False when there is no such keyboard.
    bool useKeymap(const QByteArray& keymap);
    /// `key`: code of Linux input events. Only after a keymap.
    void tap(std::uint32_t key);
    void move(std::uint32_t key, bool isDown);
    /// The real modifiers that are down: Shift 1, Control 4.
    void holdModifiers(std::uint32_t mask);
    void flush() { connection_.flush(); }

 private:
    bool make();

    WaylandConnection& connection_;
    WaylandSeat& seat_;
    Clock& clock_;
    // A keyboard of a seat that has gone is of no use.
    WaylandOwned<zwp_virtual_keyboard_manager_v1> manager_;
    WaylandOwned<zwp_virtual_keyboard_v1> keyboard_;
    QByteArray keymap_;
    Handle seatChanged_;
};

} // namespace lorvane
