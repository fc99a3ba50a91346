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

X11EditingKeys::X11EditingKeys(X11Connection& connection)
    : connection_(connection), keyboards_(connection), keyboard_(connection),
      watch_(connection, [](XKeyCode) { return false; }) {}

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
    const auto moment = canPost() ? keyboard_.moment() : std::nullopt;
    if (!moment) {
        return;
    }
    if (watch_.takeChange()) {
        findKeys();
    }
    const XKeyCode code = key == EditingKey::rightArrow ? right_ : backSpace_;
    keyboard_.lift(moment->heldModifiers);
    keyboard_.fakeKey(code, true);
    keyboard_.fakeKey(code, false);
    connection_.flush();
}

void X11EditingKeys::findKeys() {
    const XkbKeymap keymap = keyboard_.readKeymap();
    const auto find = [&keymap](xkb_keysym_t symbol, XKeyCode usual) {
        return keymap ? keyOfSymbol(keymap.get(), 0, symbol).value_or(usual) : usual;
    };
    right_ = find(XKB_KEY_Right, usualRight);
    backSpace_ = find(XKB_KEY_BackSpace, usualBackSpace);
}

} // namespace lorvane
