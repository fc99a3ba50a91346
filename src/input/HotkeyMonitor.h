// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Handle.h"
#include "input/Hotkey.h"
#include "input/KeyEvents.h"

#include <functional>
#include <optional>
#include <vector>

namespace lorvane {

/// Turns the keys of the whole desktop into gestures: a hold began, a hold ended, a hold was interrupted by a
/// chord, a tap of the hands-free key. Knows nothing of takes. Main thread. Durations are measured between
/// the times of the events, so that a busy main thread lengthens no tap. A callback may change the keys or
/// call `stop`; it must not destroy the monitor.
class HotkeyMonitor {
 public:
    explicit HotkeyMonitor(KeyEvents& events) : events_(events) {}
    HotkeyMonitor(const HotkeyMonitor&) = delete;
    HotkeyMonitor& operator=(const HotkeyMonitor&) = delete;

    /// Seconds; a shorter press is a tap.
    static constexpr double tapThreshold = 0.35;

    std::function<void()> onHoldBegan;
    /// True when the press was a tap.
    std::function<void(bool wasTap)> onHoldEnded;
    std::function<void()> onInterrupted;
    Hotkey hotkey = Hotkey::rightCommand;
    std::optional<Hotkey> toggleHotkey = Hotkey::rightOption;
    std::function<void()> onToggle;

    /// Starts watching; watches anew when it already did.
    void start();
    /// Stops watching and forgets a hold in progress without a word.
    void stop();
    [[nodiscard]] bool isRunning() const { return !monitors_.empty(); }

 private:
    void handleFlags(const KeyEvent& event);
    void handleToggleFlags(const KeyEvent& event);
    void handleKeyDown(const KeyEvent& event);

    KeyEvents& events_;
    bool toggleHolding_ = false;
    Instant toggleStart_;
    /// Another key went down during this press of the hands-free key.
    bool toggleInterrupted_ = false;
    bool holding_ = false;
    Instant holdStart_;
    std::vector<Handle> monitors_;
};

} // namespace lorvane
