// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/session/ApplicationNaming.h"
#include "input/WindowIdentity.h"

#include <functional>

namespace lorvane {

/// Who is in front as the compositor tells it, for applications that tell nobody else. Main thread.
class WindowWorkspace final : public Workspace {
 public:
    using ActiveWindow = std::function<std::optional<WindowIdentity>()>;

    WindowWorkspace(ActiveWindow active, ApplicationNaming& naming)
        : active_(std::move(active)), naming_(naming) {}

    /// Its process is 0 where the compositor does not tell it.
    [[nodiscard]] std::optional<RunningApplication> frontmostApplication() const override {
        const auto window = active_();
        if (!window) {
            return std::nullopt;
        }
        if (window != named_) {
            named_ = window;
            name_ = naming_.name(window->processId, window->applicationId);
        }
        return name_;
    }

 private:
    ActiveWindow active_;
    ApplicationNaming& naming_;
    // Asked often, and a name takes looks into files.
    mutable std::optional<WindowIdentity> named_;
    mutable RunningApplication name_;
};

} // namespace lorvane
