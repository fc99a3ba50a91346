// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/windows/WindowRules.h"

namespace lorvane {

bool WindowRules::open(WindowKind kind, const QString& context) {
    std::unique_ptr<ShellWindow> made;
    if (!isOpen(kind)) {
        made = factory_.make(kind, context, [this, kind] { closed(kind); });
        if (made == nullptr) {
            return false;
        }
    }
    if (kind != WindowKind::firstRun) {
        setPolicy(ActivationPolicy::regular);
    }
    if (made != nullptr) {
        made->applyPolicy(policy_);
        windows_.emplace(kind, std::move(made));
    }
    windows_.at(kind)->bringForward();
    return true;
}

void WindowRules::close(WindowKind kind) {
    if (isOpen(kind)) {
        closed(kind);
    }
}

// The home window takes the program out of the task bar even from under the feedback window.
void WindowRules::closed(WindowKind kind) {
    const auto window = windows_.extract(kind);
    const bool keepsPolicy =
        kind == WindowKind::firstRun || (kind == WindowKind::feedback && isOpen(WindowKind::home));
    if (!keepsPolicy && !isFirstRunActive_) {
        setPolicy(ActivationPolicy::accessory);
    }
}

void WindowRules::setPolicy(ActivationPolicy policy) {
    if (policy_ == policy) {
        return;
    }
    policy_ = policy;
    for (const auto& [kind, window] : windows_) {
        window->applyPolicy(policy);
    }
}

} // namespace lorvane
