// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <cstdint>

/// The keymap for keys that are no text, and its keys as codes of Linux input events.
namespace lorvane::commandKeys {

constexpr std::uint32_t backSpace = 14;
constexpr std::uint32_t letterV = 47;
constexpr std::uint32_t right = 106;
constexpr std::uint32_t insert = 110;

constexpr std::uint32_t shift = 1;
constexpr std::uint32_t control = 4;

/// Text of an XKB keymap: a whole American keyboard, since it stays in force until the user's next key, and
/// programs that start meanwhile read it. Empty when the system has no description of such a keyboard.
[[nodiscard]] const QByteArray& keymap();

} // namespace lorvane::commandKeys
