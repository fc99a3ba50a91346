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

std::vector<XKeyCode> heldModifiers(const xcb_get_modifier_mapping_reply_t& map,
                                    const X11Keyboards::Keys& down) {
    std::vector<XKeyCode> held;
    const auto* const codes = xcb_get_modifier_mapping_keycodes(&map);
    const int perModifier = map.keycodes_per_modifier;
    for (int i = 0; i < 8 * perModifier; ++i) {
        const bool isLock = i / perModifier == XCB_MAP_INDEX_LOCK;
        if (codes[i] != 0 && !isLock && down[codes[i]]) {
            held.push_back(codes[i]);
        }
    }
    return held;
}

} // namespace

bool PostingKeyboard::canPost() { return connection_.hasExtension(&xcb_test_id) && connection_.hasXkb(); }

std::optional<KeyboardMoment> PostingKeyboard::moment() {
    auto* const xcb = connection_.xcb();
    const auto keysCookie = xcb_query_keymap(xcb);
    const auto modifiersCookie = xcb_get_modifier_mapping(xcb);
    const auto stateCookie = xcb_xkb_get_state(xcb, XCB_XKB_ID_USE_CORE_KBD);
    const auto keys = connection_.reply(xcb_query_keymap_reply, keysCookie);
    const auto modifiers = connection_.reply(xcb_get_modifier_mapping_reply, modifiersCookie);
    const auto state = connection_.reply(xcb_xkb_get_state_reply, stateCookie);
    if (!keys || !modifiers || !state) {
        return std::nullopt;
    }
    KeyboardMoment moment;
    moment.group = state->group;
    moment.capsLock = (state->lockedMods & XCB_MOD_MASK_LOCK) != 0;
    moment.down = keysOf(*keys);
    moment.heldModifiers = heldModifiers(*modifiers, moment.down);
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
