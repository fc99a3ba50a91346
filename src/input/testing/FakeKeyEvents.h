// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "input/Hotkey.h"
#include "input/KeyEvents.h"

#include <cstdint>
#include <map>
#include <memory>

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
    bool send(const KeyEvent& event);

    bool programHasFocus = false;
    [[nodiscard]] std::size_t monitorCount() const { return monitors_->size(); }

 private:
    struct Monitor {
        KeyEventKind kind;
        bool local;
        std::function<bool(const KeyEvent&)> observer;
    };
    using Monitors = std::map<std::uint64_t, std::shared_ptr<Monitor>>;

    static int leftCode(Hotkey key) { return 1000 + codeOf(key); }
    void setDown(int code, std::uint32_t mask, bool down);
    [[nodiscard]] std::uint32_t flags() const;
    Handle add(KeyEventKind kind, bool local, std::function<bool(const KeyEvent&)> observer);

    const Clock& clock_;
    std::map<int, std::uint32_t> down_;
    std::uint64_t lastId_ = 0;
    std::shared_ptr<Monitors> monitors_ = std::make_shared<Monitors>();
};

} // namespace lorvane
