// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/windows/ShellWindow.h"

#include <map>

namespace lorvane {

/// Which windows there are, at most one of each kind, and what their opening and closing makes of the
/// program. Main thread.
class WindowRules {
 public:
    explicit WindowRules(WindowFactory& factory) : factory_(factory) {}
    WindowRules(const WindowRules&) = delete;
    WindowRules& operator=(const WindowRules&) = delete;

    /// Brings the window forward, which is made if there is none. `context` goes to a new one. False when
    /// there is no such window.
    bool open(WindowKind kind, const QString& context = {});
    /// Does nothing when it is not open.
    void close(WindowKind kind);
    /// While the first run is going on, no closing takes the program out of the task bar.
    void setFirstRunActive(bool active) { isFirstRunActive_ = active; }

    [[nodiscard]] bool isOpen(WindowKind kind) const { return windows_.contains(kind); }
    [[nodiscard]] ActivationPolicy policy() const { return policy_; }

 private:
    void closed(WindowKind kind);
    void setPolicy(ActivationPolicy policy);

    WindowFactory& factory_;
    std::map<WindowKind, std::unique_ptr<ShellWindow>> windows_;
    ActivationPolicy policy_ = ActivationPolicy::accessory;
    bool isFirstRunActive_ = false;
};

} // namespace lorvane
