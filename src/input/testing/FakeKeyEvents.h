// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "input/Hotkey.h"
#include "input/KeyEvents.h"
#include "input/KeyMonitorList.h"

#include <cstdint>
#include <map>

namespace lorvane {

/// A keyboard for tests. Keys go to other applications until `programHasFocus` is set. Like the real one it
/// gives no second event for a key that is down already, and keeps a modifier's bit set while its left twin
/// is down.
class FakeKeyEvents final : public KeyEvents {
 public:
    explicit FakeKeyEvents(const Clock& clock) : clock_(clock) {}

    [[nodiscard]] Handle addGlobalMonitor(KeyEventKind kind,
                                          std::function<void(const KeyEvent&)> observer) override;
    [[nodiscard]] Handle addLocalMonitor(KeyEventKind kind,
                                         std::function<bool(const KeyEvent&)> observer) override;

    void press(Hotkey key) { setDown(codeOf(key), maskOf(key), true); }
    void release(Hotkey key) { setDown(codeOf(key), maskOf(key), false); }
    void pressLeftTwin(Hotkey key) { setDown(leftCode(key), maskOf(key), true); }
    void releaseLeftTwin(Hotkey key) { setDown(leftCode(key), maskOf(key), false); }
    /// Another key goes down. True when a local monitor kept it from the program's window.
    bool keyDown(int code);
    /// Hands out exactly this event.
    bool send(const KeyEvent& event) { return monitors_.deliver(event, programHasFocus); }

    bool programHasFocus = false;
    [[nodiscard]] std::size_t monitorCount() const { return monitors_.size(); }

 private:
    static int leftCode(Hotkey key) { return 1000 + codeOf(key); }
    void setDown(int code, std::uint32_t mask, bool down);
    [[nodiscard]] std::uint32_t flags() const;

    const Clock& clock_;
    std::map<int, std::uint32_t> down_;
    KeyMonitorList monitors_;
};

} // namespace lorvane
