// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/PasteKeys.h"
#include "platform/linux/x11/X11KeyTable.h"

#include <bitset>
#include <optional>
#include <vector>

#include <xkbcommon/xkbcommon.h>

namespace lorvane {

/// Keys that are pressed in this order and released in the opposite one.
using Chord = std::vector<XKeyCode>;

/// The key whose v programs would read, on a keymap while `group` is in force: that of another group too,
/// where the group in force has no other Latin letter on it. Keys in `ignored` are none.
[[nodiscard]] std::optional<XKeyCode> letterV(xkb_keymap* keymap, xkb_layout_index_t group,
                                              const std::bitset<256>& ignored = {});

/// The keys that paste, given the key of v.
[[nodiscard]] Chord pasteChord(xkb_keymap* keymap, PasteRoute route, std::optional<XKeyCode> v);

/// The keys that paste under a keymap while `group` is in force. Programs read a shortcut by the symbol of
/// the key, so its place on the keyboard depends on the layout. Never holds key code 0.
[[nodiscard]] Chord pasteChord(xkb_keymap* keymap, xkb_layout_index_t group, PasteRoute route);

} // namespace lorvane
