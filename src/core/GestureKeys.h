// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Foundation.h"
#include "core/EscapeWatch.h"
#include "core/Published.h"
#include "input/HotkeyMonitor.h"

#include <functional>
#include <optional>

namespace lorvane {

/// What the gestures do; set once.
struct GestureActions {
    std::function<void()> holdBegan;
    std::function<void(bool wasTap)> holdEnded;
    std::function<void()> interrupted;
    std::function<void()> toggled;
    std::function<void()> escaped;
};

/// The keys of a dictation: which they are, kept in the preferences and followed there whoever changes them,
/// and the watch over them. The hold key and the hands-free key are never the same. Main thread.
class GestureKeys {
 public:
    /// Reads both keys and stores the hands-free key at once.
    GestureKeys(const Foundation& foundation, KeyEvents& events);
    GestureKeys(const GestureKeys&) = delete;
    GestureKeys& operator=(const GestureKeys&) = delete;

    [[nodiscard]] Hotkey hotkey() const { return hotkey_.get(); }
    [[nodiscard]] std::optional<Hotkey> toggleHotkey() const { return toggleHotkey_.get(); }
    /// Takes the key away from hands-free when that has it.
    void setHotkey(Hotkey key);
    /// The key that is held to dictate counts as none.
    void setToggleHotkey(std::optional<Hotkey> key);
    [[nodiscard]] Handle subscribeHotkey(std::function<void(const Hotkey&)> observer) {
        return hotkey_.subscribe(std::move(observer));
    }
    [[nodiscard]] Handle subscribeToggleHotkey(std::function<void(const std::optional<Hotkey>&)> observer) {
        return toggleHotkey_.subscribe(std::move(observer));
    }

    void wire(GestureActions actions);
    /// Starts to watch for gestures; may be called again.
    void start() { monitor_.start(); }
    [[nodiscard]] bool isRunning() const { return monitor_.isRunning(); }
    void watchEscape(bool wanted) { escape_.watch(wanted); }

 private:
    [[nodiscard]] Hotkey storedHotkey() const;
    [[nodiscard]] std::optional<Hotkey> storedToggleHotkey() const;
    void storeToggleHotkey(std::optional<Hotkey> key);
    void follow();

    Preferences& preferences_;
    HotkeyMonitor monitor_;
    EscapeWatch escape_;
    Published<Hotkey> hotkey_;
    Published<std::optional<Hotkey>> toggleHotkey_;
    Handle hotkeyWatch_;
    Handle toggleHotkeyWatch_;
};

} // namespace lorvane
