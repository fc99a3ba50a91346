// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11EditingKeys.h"

#include "platform/linux/x11/CharacterKeys.h"

#include <xkbcommon/xkbcommon-keysyms.h>

namespace lorvane {

namespace {

// Where the keys stand on a keyboard whose layout does not name them.
constexpr XKeyCode usualBackSpace = 22;
constexpr XKeyCode usualRight = 114;

} // namespace

std::uint32_t X11EditingKeys::modifierFlags() {
    keyboards_.refresh();
    std::uint32_t flags = 0;
    for (const auto& keys : keyboards_.keysDownOfUser()) {
        for (std::size_t code = 0; code < keys.size(); ++code) {
            flags |= keys[code] ? meaningOf(static_cast<XKeyCode>(code), std::nullopt).mask : 0;
        }
    }
    return flags;
}

void X11EditingKeys::press(EditingKey key) {
    const auto moment = keyboard_.moment();
    if (!moment) {
        return;
    }
    const XKeyCode code = keyOf(key);
    keyboard_.lift(moment->heldModifiers);
    keyboard_.fakeKey(code, true);
    keyboard_.fakeKey(code, false);
    connection_.flush();
}

XKeyCode X11EditingKeys::keyOf(EditingKey key) {
    return key == EditingKey::rightArrow
               ? keyOfSymbol(keyboard_.keymap(), 0, XKB_KEY_Right).value_or(usualRight)
               : keyOfSymbol(keyboard_.keymap(), 0, XKB_KEY_BackSpace).value_or(usualBackSpace);
}

} // namespace lorvane
