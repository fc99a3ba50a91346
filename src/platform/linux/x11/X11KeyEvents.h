// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Foundation.h"
#include "input/KeyEvents.h"
#include "input/KeyMonitorList.h"
#include "platform/linux/x11/HeldKeys.h"
#include "platform/linux/x11/ServerTime.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11Keyboards.h"

#include <xcb/xinput.h>

#include <deque>
#include <functional>

namespace lorvane {

/// The keys of the whole desktop by raw events of XInput 2.2, which arrive also while another program has
/// grabbed the keyboard and take nothing from anyone. Nothing is selected while nobody monitors. Synthetic
/// keys, ours or another program's, are left out. A modifier that went up without an event (locked screen,
/// switched console, keyboard unplugged) is found within 100 ms by its state. Main thread.
class X11KeyEvents final : public KeyEvents {
 public:
    /// `programHasFocus`: whether one of the program's own windows has the keyboard.
    X11KeyEvents(X11Connection& connection, const Foundation& foundation,
                 std::function<bool()> programHasFocus);
    X11KeyEvents(const X11KeyEvents&) = delete;
    X11KeyEvents& operator=(const X11KeyEvents&) = delete;
    ~X11KeyEvents() override;

    [[nodiscard]] Handle addGlobalMonitor(KeyEventKind kind,
                                          std::function<void(const KeyEvent&)> observer) override;
    [[nodiscard]] Handle addLocalMonitor(KeyEventKind kind,
                                         std::function<bool(const KeyEvent&)> observer) override;

    /// The display answers and has XInput 2.2.
    [[nodiscard]] bool isWatchingPossible() const;
    /// Whether a local monitor keeps, or has kept before it ended, the key press that our own window got with
    /// that key code at that server time. A round trip while there are local monitors of key presses.
    [[nodiscard]] bool isKeptFromOwnWindows(XKeyCode key, std::uint32_t serverTime);

 private:
    struct KeptPress {
        XKeyCode key;
        std::uint32_t serverTime;
        friend bool operator==(const KeptPress&, const KeptPress&) = default;
    };

    void monitorsChanged();
    void setWatching(bool watch);
    void select(std::uint32_t rawMask, std::uint32_t hierarchyMask);
    void learnWhatIsHeld();
    void calibrateTime();
    [[nodiscard]] std::optional<XKeyCode> extraKey() const;

    void handleEvent(const xcb_generic_event_t& event);
    void handleRaw(const xcb_input_raw_key_press_event_t& raw, bool isPress);
    void handleKeyDown(const KeyEvent& event, const KeptPress& press);
    bool deliver(const KeyEvent& event);
    void deliverFlags(XKeyCode key, Instant time);
    void watchHeldKeys();
    /// Ends every press that the server's own state knows nothing of any more.
    void reconcile();
    void releaseEverything();

    X11Connection& connection_;
    Clock& clock_;
    Preferences& preferences_;
    std::function<bool()> programHasFocus_;
    X11Keyboards keyboards_;
    ServerTime serverTime_;
    xcb_window_t calibrationWindow_ = XCB_WINDOW_NONE;
    Instant calibratedAt_;
    HeldKeys held_;
    std::deque<KeptPress> kept_;
    bool watching_ = false;
    KeyMonitorList monitors_{[this] { monitorsChanged(); }};
    Handle stopLater_;
    Handle stateWatch_;
    Handle events_;
    Handle lost_;
};

} // namespace lorvane
