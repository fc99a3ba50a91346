// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

#include <cstdint>
#include <functional>

namespace lorvane {

enum class KeyEventKind { flagsChanged, keyDown };

/// Modifier bits in KeyEvent::flags; left and right share a bit.
namespace modifierFlag {
constexpr std::uint32_t shift = 0x20000;
constexpr std::uint32_t control = 0x40000;
constexpr std::uint32_t option = 0x80000;
constexpr std::uint32_t command = 0x100000;
constexpr std::uint32_t function = 0x800000;
} // namespace modifierFlag

/// Virtual key codes in KeyEvent::keyCode. A key that is none of these has some other number, the same for
/// each press.
namespace keyCode {
constexpr int escape = 53;
constexpr int rightCommand = 54;
constexpr int rightShift = 60;
constexpr int rightOption = 61;
constexpr int rightControl = 62;
constexpr int fn = 63;
} // namespace keyCode

/// A modifier that went down or up (`flagsChanged`; the flags tell which), or another key that went down.
struct KeyEvent {
    KeyEventKind kind = KeyEventKind::flagsChanged;
    int keyCode = 0;
    /// The modifiers that are down after the event.
    std::uint32_t flags = 0;
    /// When the key moved, by the window system's own time on the program's clock; never the time of arrival.
    Instant time;
};

/// The keys of the whole desktop, watched and never grabbed; what the program itself posts is left out. Main
/// thread.
class KeyEvents {
 public:
    virtual ~KeyEvents() = default;

    /// Keys that go to other applications.
    [[nodiscard]] virtual Handle addGlobalMonitor(KeyEventKind kind,
                                                  std::function<void(const KeyEvent&)> observer) = 0;
    /// Keys that go to the program's own windows; the observer answers true to keep one from them.
    [[nodiscard]] virtual Handle addLocalMonitor(KeyEventKind kind,
                                                 std::function<bool(const KeyEvent&)> observer) = 0;
};

} // namespace lorvane
