// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/CharacterKeys.h"

#include "platform/linux/x11/Xkb.h"

#include <algorithm>

#include <xkbcommon/xkbcommon-keysyms.h>

namespace lorvane {

namespace {

/// Below it stand the keys that every keyboard has; those above are rarer doubles of them.
constexpr std::size_t firstRareKey = 96;
constexpr xkb_keysym_t unicodeSymbols = 0x01000000;

bool isControl(char32_t character) { return character < 0x20 || (character >= 0x7F && character < 0xA0); }

bool isWithin(xkb_keysym_t symbol, xkb_keysym_t first, xkb_keysym_t last) {
    return symbol >= first && symbol <= last;
}

/// 0 when the symbol by itself puts no character into a text.
char32_t characterOf(xkb_keysym_t symbol) {
    if (isWithin(symbol, XKB_KEY_dead_grave, XKB_KEY_dead_greek) ||
        isWithin(symbol, XKB_KEY_KP_Space, XKB_KEY_KP_Equal)) {
        return 0;
    }
    const char32_t character = xkb_keysym_to_utf32(symbol);
    return isControl(character) ? 0 : character;
}

XkbState stateOf(xkb_keymap* keymap, xkb_layout_index_t group) {
    XkbState state(xkb_state_new(keymap));
    xkb_state_update_mask(state.get(), 0, 0, 0, 0, 0, group);
    return state;
}

} // namespace

std::optional<XKeyCode> keyOfSymbol(xkb_keymap* keymap, xkb_layout_index_t group, xkb_keysym_t symbol) {
    const XkbState state = stateOf(keymap, group);
    for (xkb_keycode_t key = 1; key < 256; ++key) {
        if (xkb_state_key_get_one_sym(state.get(), key) == symbol) {
            return static_cast<XKeyCode>(key);
        }
    }
    return std::nullopt;
}

CharacterKeys::CharacterKeys(xkb_keymap* keymap, xkb_layout_index_t group, const std::bitset<256>& leftOut)
    : shiftKey_(keyOfSymbol(keymap, group, XKB_KEY_Shift_L).value_or(0)),
      thirdLevelKey_(keyOfSymbol(keymap, group, XKB_KEY_ISO_Level3_Shift).value_or(0)) {
    std::bitset<256> common;
    for (std::size_t key = 0; key < firstRareKey; ++key) {
        common.set(key);
    }
    for (const auto& keys : {common & ~leftOut, ~common & ~leftOut}) {
        for (const auto& [shift, third] :
             {std::pair(false, false), {true, false}, {false, true}, {true, true}}) {
            if ((shift && shiftKey_ == 0) || (third && thirdLevelKey_ == 0)) {
                continue;
            }
            const XkbState state = stateOf(keymap, group);
            if (shift) {
                xkb_state_update_key(state.get(), shiftKey_, XKB_KEY_DOWN);
            }
            if (third) {
                xkb_state_update_key(state.get(), thirdLevelKey_, XKB_KEY_DOWN);
            }
            learn(keymap, state.get(), {0, shift, third}, keys);
        }
    }
}

void CharacterKeys::learn(xkb_keymap* keymap, xkb_state* state, KeyStroke modifiers,
                          const std::bitset<256>& keys) {
    const xkb_keycode_t last = std::min<xkb_keycode_t>(xkb_keymap_max_keycode(keymap), 255);
    for (xkb_keycode_t key = std::max<xkb_keycode_t>(xkb_keymap_min_keycode(keymap), 1); key <= last; ++key) {
        const char32_t character = keys[key] ? characterOf(xkb_state_key_get_one_sym(state, key)) : 0;
        if (character != 0) {
            strokes_.try_emplace(
                character, KeyStroke{static_cast<XKeyCode>(key), modifiers.shift, modifiers.thirdLevel});
        }
    }
}

std::optional<KeyStroke> CharacterKeys::find(char32_t character) const {
    const auto found = strokes_.find(character);
    return found == strokes_.end() ? std::nullopt : std::optional(found->second);
}

xkb_keysym_t symbolOfCharacter(char32_t character) {
    const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
    if (isControl(character) || isSurrogate || character > 0x10FFFF) {
        return XKB_KEY_NoSymbol;
    }
    return character < 0x100 ? static_cast<xkb_keysym_t>(character) : unicodeSymbols | character;
}

} // namespace lorvane
