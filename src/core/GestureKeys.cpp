// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/GestureKeys.h"

#include "base/PreferenceCatalogue.h"

namespace lorvane {

GestureKeys::GestureKeys(const Foundation& foundation, KeyEvents& events)
    : preferences_(foundation.preferences), monitor_(events), escape_(foundation.clock, events),
      hotkey_(storedHotkey()), toggleHotkey_(storedToggleHotkey()) {
    storeToggleHotkey(toggleHotkey_.get());
    follow();
    hotkeyWatch_ = preferences_.subscribe(preference::hotkey, [this] { follow(); });
    toggleHotkeyWatch_ = preferences_.subscribe(preference::toggleHotkey, [this] { follow(); });
}

Hotkey GestureKeys::storedHotkey() const {
    return hotkeyFromRawName(preferences_.get(preference::hotkey)).value_or(Hotkey::rightCommand);
}

std::optional<Hotkey> GestureKeys::storedToggleHotkey() const {
    return hotkeyFromRawName(preferences_.get(preference::toggleHotkey));
}

// Storing is all it takes: `follow` is told of it like of a change from outside.
void GestureKeys::setHotkey(Hotkey key) { preferences_.set(preference::hotkey, QString(rawName(key))); }

void GestureKeys::setToggleHotkey(std::optional<Hotkey> key) {
    storeToggleHotkey(key == hotkey_.get() ? std::nullopt : key);
}

void GestureKeys::storeToggleHotkey(std::optional<Hotkey> key) {
    preferences_.set(preference::toggleHotkey, key ? QString(rawName(*key)) : QString(""));
}

/// Both keys together, since one edit from outside may change both, even exchange them.
void GestureKeys::follow() {
    const Hotkey key = storedHotkey();
    const auto wanted = storedToggleHotkey();
    const auto toggle = wanted == key ? std::nullopt : wanted;
    monitor_.hotkey = key;
    monitor_.toggleHotkey = toggle;
    storeToggleHotkey(toggle);
    hotkey_.set(key);
    toggleHotkey_.set(toggle);
}

void GestureKeys::wire(GestureActions actions) {
    monitor_.hotkey = hotkey_.get();
    monitor_.toggleHotkey = toggleHotkey_.get();
    monitor_.onHoldBegan = std::move(actions.holdBegan);
    monitor_.onHoldEnded = std::move(actions.holdEnded);
    monitor_.onInterrupted = std::move(actions.interrupted);
    monitor_.onToggle = std::move(actions.toggled);
    escape_.onEscape = std::move(actions.escaped);
}

} // namespace lorvane
