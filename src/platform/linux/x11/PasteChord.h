// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/PasteKeys.h"
#include "platform/linux/x11/X11KeyTable.h"

#include <vector>

#include <xkbcommon/xkbcommon.h>

namespace lorvane {

/// Keys that are pressed in this order and released in the opposite one.
using Chord = std::vector<XKeyCode>;

/// The keys that paste under a keymap while `group` is in force. Programs read a shortcut by the symbol of
/// the key, so its place on the keyboard depends on the layout. Never holds key code 0.
[[nodiscard]] Chord pasteChord(xkb_keymap* keymap, xkb_layout_index_t group, PasteRoute route);

} // namespace lorvane
