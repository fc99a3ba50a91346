// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11PasteKeys.h"

#include <functional>
#include <memory>

#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon-x11.h>

namespace lorvane {

namespace {

constexpr Duration patience = std::chrono::milliseconds(500);
constexpr Duration pollPeriod = std::chrono::milliseconds(10);
constexpr Duration keyTime = std::chrono::milliseconds(30);

struct XkbUnref {
    void operator()(xkb_context* context) const { xkb_context_unref(context); }
    void operator()(xkb_keymap* keymap) const { xkb_keymap_unref(keymap); }
    void operator()(xkb_state* state) const { xkb_state_unref(state); }
};

/// Lets go of what it pressed, whatever ends the wait in between.
class PressedChord {
 public:
    PressedChord(Chord chord, const std::function<void(XKeyCode, bool)>& fakeKey)
        : chord_(std::move(chord)), fakeKey_(fakeKey) {
        for (const XKeyCode key : chord_) {
            fakeKey_(key, true);
        }
    }
    PressedChord(const PressedChord&) = delete;
    PressedChord& operator=(const PressedChord&) = delete;
    ~PressedChord() {
        for (auto key = chord_.rbegin(); key != chord_.rend(); ++key) {
            fakeKey_(*key, false);
        }
    }

 private:
    Chord chord_;
    std::function<void(XKeyCode, bool)> fakeKey_;
};

} // namespace

QCoro::Task<bool> X11PasteKeys::post(PasteRoute route, TaskScope scope) {
    if (!canPost()) {
        co_return false;
    }
    const Instant deadline = clock_.now() + patience;
    std::vector<XKeyCode> held = heldModifiers();
    while (!held.empty() && clock_.now() < deadline) {
        co_await sleep(clock_, pollPeriod, scope);
        held = heldModifiers();
    }
    for (const XKeyCode key : held) {
        fakeKey(key, false);
    }
    // The extra key, while it is held, would bring the chord to us.
    xcb_ungrab_keyboard(connection_.xcb(), XCB_CURRENT_TIME);
    const Chord chord = chordFor(route);
    if (chord.empty()) {
        co_return false;
    }
    const std::function<void(XKeyCode, bool)> fake = [this](XKeyCode key, bool press) {
        fakeKey(key, press);
    };
    {
        const PressedChord pressed(chord, fake);
        co_await sleep(clock_, keyTime, scope);
    }
    co_return connection_.isAlive();
}

bool X11PasteKeys::canPost() { return connection_.hasExtension(&xcb_test_id) && connection_.hasXkb(); }

std::vector<XKeyCode> X11PasteKeys::heldModifiers() {
    const auto keys = connection_.reply(xcb_query_keymap_reply, xcb_query_keymap(connection_.xcb()));
    const auto map =
        connection_.reply(xcb_get_modifier_mapping_reply, xcb_get_modifier_mapping(connection_.xcb()));
    if (!keys || !map) {
        return {};
    }
    std::vector<XKeyCode> held;
    const auto* const codes = xcb_get_modifier_mapping_keycodes(map.get());
    const int perModifier = map->keycodes_per_modifier;
    for (int i = 0; i < 8 * perModifier; ++i) {
        const XKeyCode key = codes[i];
        const bool isLock = i / perModifier == XCB_MAP_INDEX_LOCK;
        if (key != 0 && !isLock && (keys->keys[key / 8] >> (key % 8) & 1U) != 0) {
            held.push_back(key);
        }
    }
    return held;
}

// The map of the keyboard that XTEST posts on, since the server hands that one out with its keys; the group
// is that of all keyboards together.
Chord X11PasteKeys::chordFor(PasteRoute route) {
    auto* const xcb = connection_.xcb();
    keyboards_.refresh();
    const std::int32_t core = xkb_x11_get_core_keyboard_device_id(xcb);
    if (core < 0) {
        return {};
    }
    const std::unique_ptr<xkb_context, XkbUnref> context(xkb_context_new(XKB_CONTEXT_NO_FLAGS));
    const auto keymapOf = [&](std::int32_t device) {
        return std::unique_ptr<xkb_keymap, XkbUnref>(
            xkb_x11_keymap_new_from_device(context.get(), xcb, device, XKB_KEYMAP_COMPILE_NO_FLAGS));
    };
    const auto coreMap = keymapOf(core);
    const auto postingMap = keymapOf(keyboards_.synthetic().value_or(static_cast<XDeviceId>(core)));
    if (!coreMap || !postingMap) {
        return {};
    }
    const std::unique_ptr<xkb_state, XkbUnref> state(xkb_x11_state_new_from_device(coreMap.get(), xcb, core));
    const xkb_layout_index_t group =
        state ? xkb_state_serialize_layout(state.get(), XKB_STATE_LAYOUT_EFFECTIVE) : 0;
    return pasteChord(postingMap.get(), group, route);
}

void X11PasteKeys::fakeKey(XKeyCode key, bool press) {
    const std::uint8_t type = press ? XCB_KEY_PRESS : XCB_KEY_RELEASE;
    xcb_test_fake_input(connection_.xcb(), type, key, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
    connection_.flush();
}

} // namespace lorvane
