// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace lorvane {

/// The left twins of the codes in KeyEvents.h.
namespace keyCode {
constexpr int leftCommand = 55;
constexpr int leftShift = 56;
constexpr int leftOption = 58;
constexpr int leftControl = 59;
} // namespace keyCode

/// The modifier bit of a key code of KeyEvents.h, left and right alike; 0 for what is no modifier.
[[nodiscard]] std::uint32_t modifierMaskOf(int code);

/// The code of the same modifier on the left; 0 for what has none.
[[nodiscard]] int leftTwinOf(int code);

/// Numbers of keys that have no name in KeyEvents.h begin here.
inline constexpr int firstOtherKeyCode = 0x100;

} // namespace lorvane
