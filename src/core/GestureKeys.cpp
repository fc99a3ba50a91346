// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/GestureKeys.h"

#include "base/PreferenceCatalogue.h"

namespace lorvane {

GestureKeys::GestureKeys(const Foundation& foundation, KeyEvents& events)
    : preferences_(foundation.preferences), monitor_(events), escape_(foundation.clock, events),
      hotkey_(hotkeyFromRawName(preferences_.get(preference::hotkey)).value_or(Hotkey::rightCommand)),
      toggleHotkey_(hotkeyFromRawName(preferences_.get(preference::toggleHotkey))) {
    storeToggleHotkey(toggleHotkey_.get());
    if (toggleHotkey_.get() == hotkey_.get()) {
        setToggleHotkey(std::nullopt);
    }
}

void GestureKeys::setHotkey(Hotkey key) {
    preferences_.set(preference::hotkey, QString(rawName(key)));
    monitor_.hotkey = key;
    if (toggleHotkey_.get() == key) {
        setToggleHotkey(std::nullopt);
    }
    hotkey_.set(key);
}

void GestureKeys::setToggleHotkey(std::optional<Hotkey> key) {
    const auto allowed = key == hotkey_.get() ? std::nullopt : key;
    storeToggleHotkey(allowed);
    monitor_.toggleHotkey = allowed;
    toggleHotkey_.set(allowed);
}

void GestureKeys::storeToggleHotkey(std::optional<Hotkey> key) {
    preferences_.set(preference::toggleHotkey, key ? QString(rawName(*key)) : QString(""));
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
