// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/OwnWindowKeyFilter.h"

namespace lorvane {

bool OwnWindowKeyFilter::nativeEventFilter(const QByteArray& type, void* message, qintptr* /*result*/) {
    if (type != "xcb_generic_event_t") {
        return false;
    }
    constexpr std::uint8_t sentByAnotherClient = 0x80;
    const auto* const event = static_cast<const xcb_key_press_event_t*>(message);
    switch (event->response_type & ~sentByAnotherClient) {
    case XCB_KEY_PRESS:
        return keeps(*event);
    case XCB_KEY_RELEASE:
        releasedAt_ = event->detail == kept_ ? event->time : releasedAt_;
        return false;
    case XCB_FOCUS_OUT: // the release goes to another window
        kept_ = 0;
        return false;
    default:
        return false;
    }
}

// Between two repeats the server may send a release, with the very time of the press that follows.
bool OwnWindowKeyFilter::keeps(const xcb_key_press_event_t& press) {
    const bool isRepeat = press.detail == kept_ && releasedAt_.value_or(press.time) == press.time;
    const bool isKept = isRepeat || keys_.isKeptFromOwnWindows(press.detail, press.time);
    kept_ = isKept ? press.detail : XKeyCode{0};
    releasedAt_.reset();
    return isKept;
}

} // namespace lorvane
