// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/OwnWindowKeyFilter.h"

namespace lorvane {

bool OwnWindowKeyFilter::nativeEventFilter(const QByteArray& type, void* message, qintptr* /*result*/) {
    if (type != "xcb_generic_event_t") {
        return false;
    }
    constexpr std::uint8_t sentByAnotherClient = 0x80;
    const auto* const event = static_cast<const xcb_key_press_event_t*>(message);
    if ((event->response_type & ~sentByAnotherClient) != XCB_KEY_PRESS) {
        return false;
    }
    return keys_.isKeptFromOwnWindows(event->detail, event->time);
}

} // namespace lorvane
