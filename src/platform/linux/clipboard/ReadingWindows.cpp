// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/clipboard/ReadingWindows.h"

namespace lorvane {

namespace {
constexpr std::size_t mostRetired = 8;
} // namespace

ReadingWindows::~ReadingWindows() {
    for (const auto window : idle_) {
        connection_.destroyWindow(window);
    }
    for (auto& entry : retired_) {
        entry.events.reset();
        connection_.destroyWindow(entry.window);
    }
}

xcb_window_t ReadingWindows::take() {
    if (idle_.empty()) {
        return connection_.makeWindow();
    }
    const auto window = idle_.back();
    idle_.pop_back();
    return window;
}

void ReadingWindows::retire(xcb_window_t window) {
    auto drop = [this, window](const xcb_generic_event_t& event) {
        if ((event.response_type & 0x7f) != XCB_PROPERTY_NOTIFY) {
            return;
        }
        const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (change.state == XCB_PROPERTY_NEW_VALUE) {
            xcb_delete_property(connection_.raw(), window, change.atom);
        }
    };
    retired_.push_back({window, connection_.handle(window, std::move(drop))});
    if (retired_.size() > mostRetired) {
        const auto oldest = retired_.front().window;
        retired_.pop_front();
        connection_.destroyWindow(oldest);
    }
}

ReadingWindow::~ReadingWindow() {
    if (isClean_) {
        windows_.giveBack(window_);
    } else {
        windows_.retire(window_);
    }
}

} // namespace lorvane
