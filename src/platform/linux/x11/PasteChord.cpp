// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/PasteChord.h"

#include <algorithm>

#include <xkbcommon/xkbcommon-keysyms.h>

namespace lorvane {

namespace {

// Where the keys stand on a keyboard whose layout does not name them.
constexpr XKeyCode usualControl = 37;
constexpr XKeyCode usualShift = 50;
constexpr XKeyCode usualInsert = 118;

/// The symbol that a key gives with no modifier held.
xkb_keysym_t symbolOf(xkb_keymap* keymap, xkb_keycode_t key, xkb_layout_index_t group) {
    const xkb_layout_index_t groups = xkb_keymap_num_layouts_for_key(keymap, key);
    if (groups == 0) {
        return XKB_KEY_NoSymbol;
    }
    const xkb_keysym_t* symbols = nullptr;
    // A key of fewer groups, such as Return, keeps its meaning in the further ones.
    const int count = xkb_keymap_key_get_syms_by_level(keymap, key, std::min(group, groups - 1), 0, &symbols);
    return count == 1 ? symbols[0] : xkb_keysym_t{XKB_KEY_NoSymbol};
}

template <typename Accept>
std::optional<XKeyCode> findKey(xkb_keymap* keymap, Accept accept) {
    const xkb_keycode_t last = std::min<xkb_keycode_t>(xkb_keymap_max_keycode(keymap), 255);
    for (xkb_keycode_t key = std::max<xkb_keycode_t>(xkb_keymap_min_keycode(keymap), 1); key <= last; ++key) {
        if (accept(key)) {
            return static_cast<XKeyCode>(key);
        }
    }
    return std::nullopt;
}

XKeyCode keyOf(xkb_keymap* keymap, xkb_keysym_t symbol, XKeyCode usual) {
    return findKey(keymap, [=](xkb_keycode_t key) { return symbolOf(keymap, key, 0) == symbol; })
        .value_or(usual);
}

bool isLatinLetter(xkb_keysym_t symbol) {
    return (symbol >= XKB_KEY_a && symbol <= XKB_KEY_z) || (symbol >= XKB_KEY_A && symbol <= XKB_KEY_Z);
}

bool hasV(xkb_keymap* keymap, xkb_keycode_t key) {
    bool found = false;
    for (xkb_layout_index_t group = 0; group < xkb_keymap_num_layouts_for_key(keymap, key); ++group) {
        found = found || symbolOf(keymap, key, group) == XKB_KEY_v;
    }
    return found;
}

} // namespace

std::optional<XKeyCode> letterV(xkb_keymap* keymap, xkb_layout_index_t group,
                                const std::bitset<256>& ignored) {
    const auto inForce = findKey(keymap, [&](xkb_keycode_t key) {
        return !ignored[key] && symbolOf(keymap, key, group) == XKB_KEY_v;
    });
    if (inForce) {
        return inForce;
    }
    return findKey(keymap, [&](xkb_keycode_t key) {
        return !ignored[key] && !isLatinLetter(symbolOf(keymap, key, group)) && hasV(keymap, key);
    });
}

Chord pasteChord(xkb_keymap* keymap, PasteRoute route, std::optional<XKeyCode> v) {
    const XKeyCode control = keyOf(keymap, XKB_KEY_Control_L, usualControl);
    const XKeyCode shift = keyOf(keymap, XKB_KEY_Shift_L, usualShift);
    if (!v || route == PasteRoute::primaryTerminal) {
        return {shift, keyOf(keymap, XKB_KEY_Insert, usualInsert)};
    }
    return route == PasteRoute::terminal ? Chord{control, shift, *v} : Chord{control, *v};
}

Chord pasteChord(xkb_keymap* keymap, xkb_layout_index_t group, PasteRoute route) {
    return pasteChord(keymap, route, letterV(keymap, group));
}

} // namespace lorvane
