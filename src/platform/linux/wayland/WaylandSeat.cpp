// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wayland/WaylandSeat.h"

namespace lorvane {

namespace {

/// Of the seat itself only its capabilities are listened to.
constexpr std::uint32_t usedVersion = 1;

} // namespace

const wl_seat_listener WaylandSeat::listener = {
    .capabilities =
        [](void* self, wl_seat*, std::uint32_t capabilities) {
            static_cast<WaylandSeat*>(self)->setCapabilities(capabilities);
        },
    .name = [](void*, wl_seat*, const char*) {},
};

WaylandSeat::WaylandSeat(WaylandConnection& connection) : connection_(connection) {
    appeared_ =
        connection.onGlobal(wl_seat_interface.name, [this](const WaylandGlobal& global) { take(global); });
    gone_ = connection.onGlobalGone([this](const WaylandGlobal& global) {
        if (seat_ && global.name == name_) {
            chooseAgain();
        }
    });
}

void WaylandSeat::take(const WaylandGlobal& global) {
    if (seat_) {
        return;
    }
    name_ = global.name;
    seat_ = waylandOwned(connection_.bindGlobal<wl_seat>(global, wl_seat_interface, usedVersion),
                         wl_seat_destroy);
    if (seat_) {
        wl_seat_add_listener(seat_.get(), &listener, this);
    }
    changed_.emit();
}

void WaylandSeat::setCapabilities(std::uint32_t capabilities) {
    if (capabilities != capabilities_) {
        capabilities_ = capabilities;
        capabilitiesChanged_.emit();
    }
}

void WaylandSeat::chooseAgain() {
    seat_.reset();
    setCapabilities(0);
    for (const auto& [name, global] : connection_.globals()) {
        if (global.interface == wl_seat_interface.name) {
            take(global);
            return;
        }
    }
    changed_.emit();
}

} // namespace lorvane
