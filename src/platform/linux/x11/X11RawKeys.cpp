// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11RawKeys.h"

#include <array>

namespace lorvane {

namespace {

constexpr X11Connection::Version rawEventsUnderGrabs{2, 2};

} // namespace

X11RawKeys::X11RawKeys(X11Connection& connection, Clock& clock)
    : connection_(connection), clock_(clock), keyboards_(connection) {
    events_ = connection_.onEvent([this](const xcb_generic_event_t& event) { handleEvent(event); });
}

X11RawKeys::~X11RawKeys() { setWatching(false); }

bool X11RawKeys::isPossible() const {
    return connection_.isAlive() && connection_.inputVersion() >= rawEventsUnderGrabs;
}

Handle X11RawKeys::watch(std::function<void(const X11KeyEdge&)> observer) {
    auto subscription = std::make_shared<Handle>(edges_.subscribe(std::move(observer)));
    ++watches_;
    setWatching(true);
    return Handle([this, subscription] {
        subscription->reset();
        if (--watches_ == 0) {
            setWatching(false);
        }
    });
}

void X11RawKeys::setWatching(bool watch) {
    if (watch == watching_ || !isPossible()) {
        return;
    }
    watching_ = watch;
    if (watch) {
        select(XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE,
               XCB_INPUT_XI_EVENT_MASK_HIERARCHY);
        keyboards_.refresh();
        calibrateTime();
    } else {
        select(0, 0);
    }
}

void X11RawKeys::select(std::uint32_t rawMask, std::uint32_t hierarchyMask) {
    struct Selection {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    };
    const std::array selections{Selection{{XCB_INPUT_DEVICE_ALL_MASTER, 1}, rawMask},
                                Selection{{XCB_INPUT_DEVICE_ALL, 1}, hierarchyMask}};
    xcb_input_xi_select_events(connection_.xcb(), connection_.root(), selections.size(), &selections[0].head);
    connection_.flush();
}

// A change of a property is told with the server's time. It waits in the queue, before every key, and was
// sent before the answer that follows it.
void X11RawKeys::calibrateTime() {
    auto* const xcb = connection_.xcb();
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    calibrationWindow_ = xcb_generate_id(xcb);
    xcb_create_window(xcb, 0, calibrationWindow_, connection_.root(), -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &mask);
    xcb_change_property(xcb, XCB_PROP_MODE_APPEND, calibrationWindow_, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                        0, nullptr);
    (void)connection_.reply(xcb_get_input_focus_reply, xcb_get_input_focus(xcb));
    calibratedAt_ = clock_.now();
    xcb_destroy_window(xcb, calibrationWindow_);
    connection_.flush();
}

void X11RawKeys::handleEvent(const xcb_generic_event_t& event) {
    if (event.response_type == XCB_PROPERTY_NOTIFY) {
        const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (change.window == calibrationWindow_) {
            serverTime_.observe(change.time, calibratedAt_);
        }
        return;
    }
    const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
    if (!watching_ || generic.response_type != XCB_GE_GENERIC ||
        generic.extension != connection_.opcodeOf(&xcb_input_id)) {
        return;
    }
    const auto& raw = reinterpret_cast<const xcb_input_raw_key_press_event_t&>(event);
    switch (generic.event_type) {
    case XCB_INPUT_RAW_KEY_PRESS:
        return handleRaw(raw, true);
    case XCB_INPUT_RAW_KEY_RELEASE:
        return handleRaw(raw, false);
    case XCB_INPUT_HIERARCHY:
        keyboards_.refresh();
        keyboardsChanged_.emit();
        return;
    default:
        return;
    }
}

void X11RawKeys::handleRaw(const xcb_input_raw_key_press_event_t& raw, bool isPress) {
    if ((raw.flags & XCB_INPUT_KEY_EVENT_FLAGS_KEY_REPEAT) == 0 && !keyboards_.isSynthetic(raw.sourceid)) {
        edges_.emit({raw.sourceid, static_cast<XKeyCode>(raw.detail), isPress,
                     serverTime_.at(raw.time, clock_.now()), raw.time});
    }
}

} // namespace lorvane
