// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wlroots/ForeignToplevels.h"

#include <algorithm>

#include <wlr-foreign-toplevel-management-unstable-v1-client-protocol.h>

namespace lorvane {

namespace {

/// What came later is of no use here.
constexpr std::uint32_t usedVersion = 1;

bool holdsActivated(const wl_array* states) {
    const auto* const first = static_cast<const std::uint32_t*>(states->data);
    const auto* const last = first + states->size / sizeof(std::uint32_t);
    return std::find(first, last, ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED) != last;
}

} // namespace

/// Its events describe a change one by one and hold from `done` on.
struct ForeignToplevels::Toplevel {
    Toplevel(ForeignToplevels& list, zwlr_foreign_toplevel_handle_v1* handle) : owner(list), raw(handle) {}
    Toplevel(const Toplevel&) = delete;
    Toplevel& operator=(const Toplevel&) = delete;
    ~Toplevel() { zwlr_foreign_toplevel_handle_v1_destroy(raw); }

    ForeignToplevels& owner;
    zwlr_foreign_toplevel_handle_v1* raw;
    QString applicationId;
    bool isActive = false;
    QString toldId;
    bool toldActive = false;
};

struct ForeignToplevels::Listeners {
    using Handle = zwlr_foreign_toplevel_handle_v1;
    using Manager = zwlr_foreign_toplevel_manager_v1;
    static Toplevel& in(void* self) { return *static_cast<Toplevel*>(self); }

    static constexpr zwlr_foreign_toplevel_handle_v1_listener toplevel{
        .title = [](void*, Handle*, const char*) {},
        .app_id = [](void* self, Handle*, const char* id) { in(self).toldId = QString::fromUtf8(id); },
        .output_enter = [](void*, Handle*, wl_output*) {},
        .output_leave = [](void*, Handle*, wl_output*) {},
        .state = [](void* self, Handle*, wl_array* states) { in(self).toldActive = holdsActivated(states); },
        .done =
            [](void* self, Handle*) {
                in(self).applicationId = in(self).toldId;
                in(self).isActive = in(self).toldActive;
            },
        .closed =
            [](void* self, Handle* raw) {
                std::erase_if(in(self).owner.toplevels_,
                              [raw](const std::unique_ptr<Toplevel>& one) { return one->raw == raw; });
            },
        .parent = [](void*, Handle*, Handle*) {},
    };
    static constexpr zwlr_foreign_toplevel_manager_v1_listener manager{
        .toplevel =
            [](void* self, Manager*, Handle* raw) {
                auto& list = *static_cast<ForeignToplevels*>(self);
                list.toplevels_.push_back(std::make_unique<Toplevel>(list, raw));
                zwlr_foreign_toplevel_handle_v1_add_listener(raw, &toplevel, list.toplevels_.back().get());
            },
        .finished = [](void* self, Manager*) { static_cast<ForeignToplevels*>(self)->release(); },
    };
};

ForeignToplevels::ForeignToplevels(WaylandConnection& connection) : connection_(connection) {
    came_ = connection.onGlobal(zwlr_foreign_toplevel_manager_v1_interface.name,
                                [this](const WaylandGlobal& global) { bind(global); });
    gone_ = connection.onGlobalGone([this](const WaylandGlobal& global) {
        if (manager_ != nullptr && global.name == global_) {
            release();
        }
    });
}

ForeignToplevels::~ForeignToplevels() { release(); }

std::optional<WindowIdentity> ForeignToplevels::active() const {
    const auto found = std::find_if(toplevels_.begin(), toplevels_.end(),
                                    [](const auto& toplevel) { return toplevel->isActive; });
    if (!connection_.isAlive() || found == toplevels_.end()) {
        return std::nullopt;
    }
    return WindowIdentity{(*found)->applicationId, 0};
}

void ForeignToplevels::bind(const WaylandGlobal& global) {
    if (manager_ != nullptr) {
        return;
    }
    global_ = global.name;
    manager_ = connection_.bindGlobal<zwlr_foreign_toplevel_manager_v1>(
        global, zwlr_foreign_toplevel_manager_v1_interface, usedVersion);
    if (manager_ != nullptr) {
        zwlr_foreign_toplevel_manager_v1_add_listener(manager_, &Listeners::manager, this);
    }
}

void ForeignToplevels::release() {
    toplevels_.clear();
    if (manager_ != nullptr) {
        zwlr_foreign_toplevel_manager_v1_destroy(manager_);
        manager_ = nullptr;
    }
}

} // namespace lorvane
