// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/x11/X11KeyTable.h"

#include <bitset>
#include <optional>
#include <unordered_map>

#include <xkbcommon/xkbcommon.h>

namespace lorvane {

/// One key pressed and released, with these modifiers and no others.
struct KeyStroke {
    XKeyCode key = 0;
    bool shift = false;
    /// AltGr, as most layouts call it.
    bool thirdLevel = false;

    friend bool operator==(const KeyStroke&, const KeyStroke&) = default;
};

/// The characters that one layout has on keys of its own. A dead key gives none: it waits for the next key.
/// Nor does the keypad, whose keys depend on Num Lock.
class CharacterKeys {
 public:
    /// `group` counts from 0; `leftOut` are keys whose symbols are not to be relied on.
    CharacterKeys(xkb_keymap* keymap, xkb_layout_index_t group, const std::bitset<256>& leftOut);

    [[nodiscard]] std::optional<KeyStroke> find(char32_t character) const;
    /// The keys that hold the modifiers of a stroke; 0 when the layout has none, and no stroke needs it.
    [[nodiscard]] XKeyCode shiftKey() const { return shiftKey_; }
    [[nodiscard]] XKeyCode thirdLevelKey() const { return thirdLevelKey_; }

 private:
    void learn(xkb_keymap* keymap, xkb_state* state, KeyStroke modifiers, const std::bitset<256>& keys);

    std::unordered_map<char32_t, KeyStroke> strokes_;
    XKeyCode shiftKey_ = 0;
    XKeyCode thirdLevelKey_ = 0;
};

/// The key whose symbol without modifiers this is.
[[nodiscard]] std::optional<XKeyCode> keyOfSymbol(xkb_keymap* keymap, xkb_layout_index_t group,
                                                  xkb_keysym_t symbol);
/// The symbol that stands for this character whatever the layout; NoSymbol for what is no character of text.
[[nodiscard]] xkb_keysym_t symbolOfCharacter(char32_t character);

} // namespace lorvane
