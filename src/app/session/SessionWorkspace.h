// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "input/Workspace.h"

#include <array>

namespace lorvane {

/// Who is in front where windows of two systems are mixed. The X server beside a compositor names an active
/// window only while it is one of its own (measured with sway, KWin and GNOME Shell), so it is asked first.
/// Applications that are on neither are known by their windows, where the compositor tells of those.
class SessionWorkspace final : public Workspace {
 public:
    SessionWorkspace(const Workspace& ofX, const Workspace& ofAccessibility, const Workspace& ofWindows)
        : workspaces_{&ofX, &ofAccessibility, &ofWindows} {}

    [[nodiscard]] std::optional<RunningApplication> frontmostApplication() const override {
        std::optional<RunningApplication> front;
        for (const Workspace* const workspace : workspaces_) {
            if (!front) {
                front = workspace->frontmostApplication();
            }
        }
        return front;
    }

 private:
    /// Best first.
    std::array<const Workspace*, 3> workspaces_;
};

} // namespace lorvane
