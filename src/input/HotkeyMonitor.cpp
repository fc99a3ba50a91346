// SPDX-License-Identifier: GPL-3.0-or-later
#include "input/HotkeyMonitor.h"

namespace lorvane {

namespace {

/// A key that goes down this soon after the hold key makes a chord of the two; later it is a bumped key.
constexpr double chordWindow = 1.0;

bool isTap(Instant pressed, Instant released) {
    return released - pressed < seconds(HotkeyMonitor::tapThreshold);
}

template <typename Callback, typename... Args>
void call(const Callback& callback, Args... args) {
    if (callback) {
        callback(args...);
    }
}

} // namespace

void HotkeyMonitor::start() {
    stop();
    monitors_.push_back(events_.addGlobalMonitor(KeyEventKind::flagsChanged,
                                                 [this](const KeyEvent& event) { handleFlags(event); }));
    monitors_.push_back(events_.addGlobalMonitor(KeyEventKind::keyDown,
                                                 [this](const KeyEvent& event) { handleKeyDown(event); }));
    // No local monitor for other keys: typing in our own windows interrupts no gesture.
    monitors_.push_back(events_.addLocalMonitor(KeyEventKind::flagsChanged, [this](const KeyEvent& event) {
        handleFlags(event);
        return false;
    }));
}

void HotkeyMonitor::stop() {
    monitors_.clear();
    holding_ = false;
}

void HotkeyMonitor::handleFlags(const KeyEvent& event) {
    if (toggleHotkey && event.keyCode == codeOf(*toggleHotkey) && *toggleHotkey != hotkey) {
        handleToggleFlags(event);
        return;
    }
    if (event.keyCode != codeOf(hotkey)) {
        return;
    }
    const bool isDown = (event.flags & maskOf(hotkey)) != 0;
    if (isDown == holding_) {
        return;
    }
    holding_ = isDown;
    if (isDown) {
        holdStart_ = event.time;
        call(onHoldBegan);
    } else {
        call(onHoldEnded, isTap(holdStart_, event.time));
    }
}

void HotkeyMonitor::handleToggleFlags(const KeyEvent& event) {
    const bool isDown = (event.flags & maskOf(*toggleHotkey)) != 0;
    if (isDown == toggleHolding_) {
        return;
    }
    toggleHolding_ = isDown;
    if (isDown) {
        toggleStart_ = event.time;
        toggleInterrupted_ = false;
    } else if (isTap(toggleStart_, event.time) && !toggleInterrupted_) {
        call(onToggle);
    }
}

void HotkeyMonitor::handleKeyDown(const KeyEvent& event) {
    if (toggleHolding_) {
        toggleInterrupted_ = true;
    }
    if (holding_ && event.time - holdStart_ < seconds(chordWindow)) {
        holding_ = false;
        call(onInterrupted);
    }
}

} // namespace lorvane
