// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "base/Signal.h"
#include "platform/linux/x11/ServerTime.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11Keyboards.h"

#include <xcb/xinput.h>

#include <functional>

namespace lorvane {

/// A key of a user's keyboard that moved.
struct X11KeyEdge {
    XDeviceId device = 0;
    XKeyCode key = 0;
    bool isPress = false;
    /// By the server's own time, on the program's clock.
    Instant time;
    /// In milliseconds of the server.
    std::uint32_t serverTime = 0;
};

/// The keys of the whole display by raw events of XInput 2.2, which arrive also while another program has
/// grabbed the keyboard and take nothing from anyone. Synthetic keys, ours or another program's, and repeats
/// are left out. Nothing is selected while nobody watches. One for each connection: a second would take the
/// events of the first. Main thread.
class X11RawKeys {
 public:
    X11RawKeys(X11Connection& connection, Clock& clock);
    X11RawKeys(const X11RawKeys&) = delete;
    X11RawKeys& operator=(const X11RawKeys&) = delete;
    ~X11RawKeys();

    /// The display answers and has XInput 2.2.
    [[nodiscard]] bool isPossible() const;
    /// Every key that moves until the handle ends. Nothing is told where it is not possible.
    [[nodiscard]] Handle watch(std::function<void(const X11KeyEdge&)> observer);
    /// Told when a keyboard came or went, while somebody watches.
    [[nodiscard]] Handle onKeyboardsChanged(std::function<void()> changed) {
        return keyboardsChanged_.subscribe(std::move(changed));
    }
    /// Up to date while somebody watches.
    [[nodiscard]] const X11Keyboards& keyboards() const { return keyboards_; }

 private:
    void setWatching(bool watch);
    void select(std::uint32_t rawMask, std::uint32_t hierarchyMask);
    void calibrateTime();
    void handleEvent(const xcb_generic_event_t& event);
    void handleRaw(const xcb_input_raw_key_press_event_t& raw, bool isPress);

    X11Connection& connection_;
    Clock& clock_;
    X11Keyboards keyboards_;
    ServerTime serverTime_;
    xcb_window_t calibrationWindow_ = XCB_WINDOW_NONE;
    Instant calibratedAt_;
    int watches_ = 0;
    bool watching_ = false;
    Signal<X11KeyEdge> edges_;
    Signal<> keyboardsChanged_;
    Handle events_;
};

} // namespace lorvane
