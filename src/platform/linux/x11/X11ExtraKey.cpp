// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11ExtraKey.h"

#include "base/PreferenceCatalogue.h"
#include "input/Hotkey.h"

namespace lorvane {

X11ExtraKey::X11ExtraKey(X11Connection& connection, const Foundation& foundation)
    : connection_(connection), preferences_(foundation.preferences), log_(foundation.log) {
    for (const auto* const key : {&preference::hotkey, &preference::toggleHotkey, &preference::extraKey}) {
        subscriptions_.push_back(preferences_.subscribe(*key, [this] { follow(); }));
    }
    follow();
}

X11ExtraKey::~X11ExtraKey() { letGo(); }

bool X11ExtraKey::isChosen() const {
    return hotkeyFromRawName(preferences_.get(preference::hotkey)) == Hotkey::fn ||
           hotkeyFromRawName(preferences_.get(preference::toggleHotkey)) == Hotkey::fn;
}

void X11ExtraKey::follow() {
    const QString name = preferences_.get(preference::extraKey);
    const auto key = extraKeyFromName(name);
    if (!isChosen()) {
        letGo();
        state_ = State::notChosen;
    } else if (!key) {
        letGo();
        state_ = State::unknownKey;
        log_.diagLog("[tirra-x11] no key is called \"" + name + "\"");
    } else if (kept_ != key) {
        letGo();
        state_ = keep(*key);
    }
}

X11ExtraKey::State X11ExtraKey::keep(XKeyCode key) {
    if (!connection_.isAlive()) {
        return State::refused;
    }
    const int error =
        connection_.errorOf(xcb_grab_key_checked(connection_.xcb(), 0, connection_.root(), XCB_MOD_MASK_ANY,
                                                 key, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    if (error != 0 || !connection_.isAlive()) {
        log_.diagLog(
            QStringLiteral("[tirra-x11] key %1 belongs to another program (error %2)").arg(key).arg(error));
        return State::refused;
    }
    kept_ = key;
    return State::kept;
}

void X11ExtraKey::letGo() {
    if (kept_ && connection_.isAlive()) {
        xcb_ungrab_key(connection_.xcb(), *kept_, connection_.root(), XCB_MOD_MASK_ANY);
        connection_.flush();
    }
    kept_.reset();
}

} // namespace lorvane
