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

/// Text of an XKB keymap.
[[nodiscard]] inline QByteArray keymap() {
    return "xkb_keymap{xkb_keycodes "
           "\"lorvane\"{minimum=8;maximum=255;<BKSP>=22;<AB04>=55;<RGHT>=114;<INS>=118;};"
           "xkb_types \"lorvane\"{"
           "type \"ONE_LEVEL\"{modifiers=none;level_name[Level1]=\"Any\";};"
           "type \"TWO_LEVEL\"{modifiers=Shift;map[Shift]=Level2;level_name[Level1]=\"Base\";"
           "level_name[Level2]=\"Shift\";};"
           "type \"ALPHABETIC\"{modifiers=Shift;map[Shift]=Level2;level_name[Level1]=\"Base\";"
           "level_name[Level2]=\"Caps\";};};"
           "xkb_compatibility \"lorvane\"{};"
           "xkb_symbols \"lorvane\"{name[Group1]=\"Lorvane\";key <BKSP>{[BackSpace]};key <AB04>{[v,V]};key "
           "<RGHT>{[Right]};"
           "key <INS>{[Insert]};};};";
}

} // namespace lorvane::commandKeys
