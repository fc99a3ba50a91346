// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "input/WindowIdentity.h"
#include "platform/linux/wayland/WaylandConnection.h"

#include <memory>
#include <optional>
#include <vector>

struct zwlr_foreign_toplevel_manager_v1;
struct zwlr_foreign_toplevel_handle_v1;

namespace lorvane {

/// The windows of a compositor that tells of them by wlr_foreign_toplevel_management_unstable_v1 (sway,
/// Hyprland, labwc and others). It does not tell whose process they are. Main thread.
class ForeignToplevels {
 public:
    explicit ForeignToplevels(WaylandConnection& connection);
    ForeignToplevels(const ForeignToplevels&) = delete;
    ForeignToplevels& operator=(const ForeignToplevels&) = delete;
    ~ForeignToplevels();

    /// The window that has the keyboard; nothing when none has, or when nobody tells.
    [[nodiscard]] std::optional<WindowIdentity> active() const;

 private:
    struct Toplevel;
    struct Listeners;

    void bind(const WaylandGlobal& global);
    void release();

    WaylandConnection& connection_;
    std::uint32_t global_ = 0;
    zwlr_foreign_toplevel_manager_v1* manager_ = nullptr;
    std::vector<std::unique_ptr<Toplevel>> toplevels_;
    Handle came_;
    Handle gone_;
};

} // namespace lorvane
