// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/kde/PlasmaWindows.h"

#include <algorithm>

#include <plasma-window-management-client-protocol.h>

namespace lorvane {

namespace {

// From 13 on windows come by another event; nothing newer is of use here.
constexpr std::uint32_t usedVersion = 10;
/// The first one in which a window can be let go of.
constexpr std::uint32_t leastVersion = 4;

} // namespace

struct PlasmaWindows::Window {
    Window(PlasmaWindows& list, org_kde_plasma_window* handle) : owner(list), raw(handle) {}
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
    ~Window() { org_kde_plasma_window_destroy(raw); }

    PlasmaWindows& owner;
    org_kde_plasma_window* raw;
    WindowIdentity identity;
    bool isActive = false;
};

struct PlasmaWindows::Listeners {
    using Raw = org_kde_plasma_window;
    using Manager = org_kde_plasma_window_management;
    static Window& in(void* self) { return *static_cast<Window*>(self); }

    // A null among them would be called; every event up to the used version stands here.
    static constexpr org_kde_plasma_window_listener window{
        .title_changed = [](void*, Raw*, const char*) {},
        .app_id_changed = [](void* self, Raw*,
                             const char* id) { in(self).identity.applicationId = QString::fromUtf8(id); },
        .state_changed =
            [](void* self, Raw*, std::uint32_t flags) {
                in(self).isActive = (flags & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE) != 0;
            },
        .virtual_desktop_changed = [](void*, Raw*, std::int32_t) {},
        .themed_icon_name_changed = [](void*, Raw*, const char*) {},
        .unmapped =
            [](void* self, Raw* raw) {
                std::erase_if(in(self).owner.windows_,
                              [raw](const std::unique_ptr<Window>& one) { return one->raw == raw; });
            },
        .initial_state = [](void*, Raw*) {},
        .parent_window = [](void*, Raw*, Raw*) {},
        .geometry = [](void*, Raw*, std::int32_t, std::int32_t, std::uint32_t, std::uint32_t) {},
        .icon_changed = [](void*, Raw*) {},
        .pid_changed = [](void* self, Raw*, std::uint32_t pid) { in(self).identity.processId = pid; },
        .virtual_desktop_entered = [](void*, Raw*, const char*) {},
        .virtual_desktop_left = [](void*, Raw*, const char*) {},
        .application_menu = [](void*, Raw*, const char*, const char*) {},
        .activity_entered = [](void*, Raw*, const char*) {},
        .activity_left = [](void*, Raw*, const char*) {},
        .resource_name_changed = [](void*, Raw*, const char*) {},
    };
    static constexpr org_kde_plasma_window_management_listener manager{
        .show_desktop_changed = [](void*, Manager*, std::uint32_t) {},
        .window =
            [](void* self, Manager* raw, std::uint32_t number) {
                auto& list = *static_cast<PlasmaWindows*>(self);
                auto* const one = org_kde_plasma_window_management_get_window(raw, number);
                list.windows_.push_back(std::make_unique<Window>(list, one));
                org_kde_plasma_window_add_listener(one, &window, list.windows_.back().get());
            },
        .stacking_order_changed = [](void*, Manager*, wl_array*) {},
        .stacking_order_uuid_changed = [](void*, Manager*, const char*) {},
        .window_with_uuid = [](void*, Manager*, std::uint32_t, const char*) {},
    };
};

PlasmaWindows::PlasmaWindows(WaylandConnection& connection) : connection_(connection) {
    came_ = connection.onGlobal(org_kde_plasma_window_management_interface.name,
                                [this](const WaylandGlobal& global) { bind(global); });
    gone_ = connection.onGlobalGone([this](const WaylandGlobal& global) {
        if (manager_ != nullptr && global.name == global_) {
            release();
        }
    });
}

PlasmaWindows::~PlasmaWindows() { release(); }

std::optional<WindowIdentity> PlasmaWindows::active() const {
    const auto found =
        std::find_if(windows_.begin(), windows_.end(), [](const auto& window) { return window->isActive; });
    if (!connection_.isAlive() || found == windows_.end()) {
        return std::nullopt;
    }
    return (*found)->identity;
}

void PlasmaWindows::bind(const WaylandGlobal& global) {
    if (manager_ != nullptr || global.version < leastVersion) {
        return;
    }
    global_ = global.name;
    manager_ = connection_.bindGlobal<org_kde_plasma_window_management>(
        global, org_kde_plasma_window_management_interface, usedVersion);
    if (manager_ != nullptr) {
        org_kde_plasma_window_management_add_listener(manager_, &Listeners::manager, this);
    }
}

void PlasmaWindows::release() {
    windows_.clear();
    if (manager_ != nullptr) {
        org_kde_plasma_window_management_destroy(manager_);
        manager_ = nullptr;
    }
}

} // namespace lorvane
