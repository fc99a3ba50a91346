// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/PostingKeyboard.h"

#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon-x11.h>

namespace lorvane {

namespace {

X11Keyboards::Keys keysOf(const xcb_query_keymap_reply_t& state) {
    X11Keyboards::Keys keys;
    for (std::size_t code = 0; code < keys.size(); ++code) {
        keys[code] = (state.keys[code / 8] >> (code % 8) & 1U) != 0;
    }
    return keys;
}

/// The keys that set a modifier while they are down, as the map has it: not all of them stand in the core
/// modifier mapping. A key that locks is none.
X11Keyboards::Keys modifiersOf(xkb_keymap* keymap) {
    X11Keyboards::Keys modifiers;
    for (xkb_keycode_t key = xkb_keymap_min_keycode(keymap); key < modifiers.size(); ++key) {
        const XkbState state(xkb_state_new(keymap));
        xkb_state_update_key(state.get(), key, XKB_KEY_DOWN);
        const bool isDepressed = xkb_state_serialize_mods(state.get(), XKB_STATE_MODS_DEPRESSED) != 0;
        const bool isLocked = xkb_state_serialize_mods(state.get(), XKB_STATE_MODS_LOCKED) != 0;
        modifiers[key] = isDepressed && !isLocked;
    }
    return modifiers;
}

} // namespace

PostingKeyboard::PostingKeyboard(X11Connection& connection, std::function<bool(XKeyCode)> isOfNoConcern)
    : connection_(connection), keyboards_(connection), watch_(connection, std::move(isOfNoConcern)) {}

bool PostingKeyboard::canPost() { return connection_.hasExtension(&xcb_test_id) && connection_.hasXkb(); }

xkb_keymap* PostingKeyboard::keymap() {
    if (canPost() && (watch_.takeChange() || !keymap_)) {
        keymap_ = readKeymap();
        modifiers_ = keymap_ ? modifiersOf(keymap_.get()) : X11Keyboards::Keys();
        ++edition_;
    }
    return keymap_.get();
}

std::optional<KeyboardMoment> PostingKeyboard::moment() {
    if (keymap() == nullptr) {
        return std::nullopt;
    }
    auto* const xcb = connection_.xcb();
    const auto keysCookie = xcb_query_keymap(xcb);
    const auto stateCookie = xcb_xkb_get_state(xcb, XCB_XKB_ID_USE_CORE_KBD);
    const auto keys = connection_.reply(xcb_query_keymap_reply, keysCookie);
    const auto state = connection_.reply(xcb_xkb_get_state_reply, stateCookie);
    if (!keys || !state) {
        return std::nullopt;
    }
    KeyboardMoment moment;
    moment.group = state->group;
    moment.capsLock = (state->lockedMods & XCB_MOD_MASK_LOCK) != 0;
    moment.down = keysOf(*keys);
    for (std::size_t code = 0; code < moment.down.size(); ++code) {
        if (moment.down[code] && modifiers_[code]) {
            moment.heldModifiers.push_back(static_cast<XKeyCode>(code));
        }
    }
    return moment;
}

XkbKeymap PostingKeyboard::readKeymap() {
    auto* const xcb = connection_.xcb();
    keyboards_.refresh();
    const std::int32_t core = xkb_x11_get_core_keyboard_device_id(xcb);
    if (core < 0) {
        return nullptr;
    }
    if (!context_) {
        context_.reset(xkb_context_new(XKB_CONTEXT_NO_FLAGS));
    }
    const std::int32_t device = keyboards_.synthetic().value_or(static_cast<XDeviceId>(core));
    return XkbKeymap(
        xkb_x11_keymap_new_from_device(context_.get(), xcb, device, XKB_KEYMAP_COMPILE_NO_FLAGS));
}

void PostingKeyboard::lift(const std::vector<XKeyCode>& modifiers) {
    for (const XKeyCode key : modifiers) {
        fakeKey(key, false);
    }
    xcb_ungrab_keyboard(connection_.xcb(), XCB_CURRENT_TIME);
}

void PostingKeyboard::fakeKey(XKeyCode key, bool press) {
    const std::uint8_t type = press ? XCB_KEY_PRESS : XCB_KEY_RELEASE;
    xcb_test_fake_input(connection_.xcb(), type, key, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
}

void PostingKeyboard::lockCaps(bool locked) {
    xcb_xkb_latch_lock_state(connection_.xcb(), XCB_XKB_ID_USE_CORE_KBD, XCB_MOD_MASK_LOCK,
                             locked ? XCB_MOD_MASK_LOCK : 0, 0, 0, 0, 0, 0);
}

} // namespace lorvane
