// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/KeymapWatch.h"

namespace lorvane {

KeymapWatch::KeymapWatch(X11Connection& connection, std::function<bool(XKeyCode)> isOfNoConcern)
    : isOfNoConcern_(std::move(isOfNoConcern)) {
    if (!connection.isAlive() || !connection.hasXkb()) {
        return;
    }
    constexpr std::uint16_t events = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
    constexpr std::uint16_t allParts = 0xFF;
    xcb_xkb_select_events(connection.xcb(), XCB_XKB_ID_USE_CORE_KBD, events, 0, events, allParts, allParts,
                          nullptr);
    connection.flush();
    firstXkbEvent_ = xcb_get_extension_data(connection.xcb(), &xcb_xkb_id)->first_event;
    events_ = connection.onEvent([this](const xcb_generic_event_t& event) { handleEvent(event); });
}

void KeymapWatch::handleEvent(const xcb_generic_event_t& event) {
    if (event.response_type != firstXkbEvent_) {
        return;
    }
    const auto& change = reinterpret_cast<const xcb_xkb_map_notify_event_t&>(event);
    if (change.xkbType == XCB_XKB_NEW_KEYBOARD_NOTIFY ||
        (change.xkbType == XCB_XKB_MAP_NOTIFY && concerns(change))) {
        changed_ = true;
    }
}

bool KeymapWatch::concerns(const xcb_xkb_map_notify_event_t& change) const {
    for (int key = change.firstKeySym; key < change.firstKeySym + change.nKeySyms; ++key) {
        if (!isOfNoConcern_(static_cast<XKeyCode>(key))) {
            return true;
        }
    }
    return change.nKeySyms == 0;
}

} // namespace lorvane
