// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Foundation.h"
#include "input/KeyEvents.h"
#include "input/KeyMonitorList.h"
#include "platform/linux/x11/HeldKeys.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11RawKeys.h"

#include <deque>
#include <functional>

namespace lorvane {

/// The keys of the whole desktop by raw events (X11RawKeys). Nothing is selected while nobody monitors. A
/// modifier that went up without an event (locked screen, switched console, keyboard unplugged) is found
/// within 100 ms by its state. Main thread.
class X11KeyEvents final : public KeyEvents {
 public:
    /// `programHasFocus`: whether one of the program's own windows has the keyboard.
    X11KeyEvents(X11Connection& connection, const Foundation& foundation,
                 std::function<bool()> programHasFocus);
    X11KeyEvents(const X11KeyEvents&) = delete;
    X11KeyEvents& operator=(const X11KeyEvents&) = delete;
    ~X11KeyEvents() override = default;

    [[nodiscard]] Handle addGlobalMonitor(KeyEventKind kind,
                                          std::function<void(const KeyEvent&)> observer) override;
    [[nodiscard]] Handle addLocalMonitor(KeyEventKind kind,
                                         std::function<bool(const KeyEvent&)> observer) override;

    /// The display answers and has XInput 2.2.
    [[nodiscard]] bool isWatchingPossible() const { return raw_.isPossible(); }
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
    void learnWhatIsHeld();
    [[nodiscard]] std::optional<XKeyCode> extraKey() const;

    void handleEdge(const X11KeyEdge& edge);
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
    X11RawKeys raw_;
    HeldKeys held_;
    std::deque<KeptPress> kept_;
    Handle watch_;
    KeyMonitorList monitors_{[this] { monitorsChanged(); }};
    Handle stopLater_;
    Handle stateWatch_;
    Handle keyboards_;
    Handle lost_;
};

} // namespace lorvane
