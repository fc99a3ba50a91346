// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "input/WindowIdentity.h"
#include "platform/linux/wayland/WaylandConnection.h"

#include <memory>
#include <optional>
#include <vector>

struct org_kde_plasma_window_management;
struct org_kde_plasma_window;

namespace lorvane {

/// The windows of KWin, which tells of them to a program that names org_kde_plasma_window_management in its
/// desktop file (X-KDE-Wayland-Interfaces, as for fake input). Main thread.
class PlasmaWindows {
 public:
    explicit PlasmaWindows(WaylandConnection& connection);
    PlasmaWindows(const PlasmaWindows&) = delete;
    PlasmaWindows& operator=(const PlasmaWindows&) = delete;
    ~PlasmaWindows();

    /// The window that has the keyboard; nothing when none has, or when nobody tells.
    [[nodiscard]] std::optional<WindowIdentity> active() const;

 private:
    struct Window;
    struct Listeners;

    void bind(const WaylandGlobal& global);
    void release();

    WaylandConnection& connection_;
    std::uint32_t global_ = 0;
    org_kde_plasma_window_management* manager_ = nullptr;
    std::vector<std::unique_ptr<Window>> windows_;
    Handle came_;
    Handle gone_;
};

} // namespace lorvane
