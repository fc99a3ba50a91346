// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "core/Phase.h"
#include "core/Presence.h"

#include <optional>

namespace lorvane {

/// Decides when the pill is on screen, and opens the windows. Main thread.
class ScreenPresence {
 public:
    ScreenPresence(Clock& clock, Pill& pill, Windows& windows);

    void showPill() { pill_.show(); }
    /// Shows the pill, or orders it out while the bar is hidden or the first run is on screen and nothing is
    /// going on.
    void refreshPill(const Phase& phase);
    /// Keeps the idle pill away for so long. A take that is running goes on.
    void hideBar(Duration duration);

    void presentOnboarding();
    void closeOnboarding();
    [[nodiscard]] bool isOnboardingActive() const { return isOnboardingActive_; }
    [[nodiscard]] Windows& windows() { return windows_; }

 private:
    Clock& clock_;
    Pill& pill_;
    Windows& windows_;
    bool isOnboardingActive_ = false;
    std::optional<Instant> barHiddenUntil_;
};

} // namespace lorvane
