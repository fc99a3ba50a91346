// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/DictationStatus.h"

namespace lorvane {

DictationStatus::DictationStatus(Clock& clock, ScreenPresence& screen, Accessibility& accessibility)
    : clock_(clock), screen_(screen), accessibility_(accessibility) {}

void DictationStatus::showPhase(const Phase& shown, Duration hideAfter) {
    phase.set(shown);
    // Also while the bar is hidden: a notice is always seen.
    screen_.showPill();
    hide_ = clock_.after(hideAfter, [this, shown] {
        if (phase.get() == shown) {
            phase.set(Idle{});
        }
        refreshPill();
    });
}

bool DictationStatus::recheckPermissions() {
    const bool trusted = accessibility_.isTrusted();
    permissionsGranted.set(trusted);
    return trusted;
}

void DictationStatus::watchPermissions(std::function<void()> granted) {
    permissionWatch_ = accessibility_.subscribe([this, granted = std::move(granted)] {
        const bool before = permissionsGranted.get();
        const bool now = recheckPermissions();
        if (now && !before) {
            granted();
        }
    });
}

} // namespace lorvane
