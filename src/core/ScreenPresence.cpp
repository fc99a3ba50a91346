// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/ScreenPresence.h"

namespace lorvane {

ScreenPresence::ScreenPresence(Clock& clock, Pill& pill, Windows& windows)
    : clock_(clock), pill_(pill), windows_(windows) {}

void ScreenPresence::refreshPill(const Phase& phase) {
    if (barHiddenUntil_ && clock_.now() >= *barHiddenUntil_) {
        barHiddenUntil_.reset();
    }
    const bool isAway = barHiddenUntil_.has_value() || isOnboardingActive_;
    if (isAway && isIn<Idle>(phase)) {
        pill_.orderOut();
    } else {
        pill_.show();
    }
}

void ScreenPresence::hideBar(Duration duration) {
    barHiddenUntil_ = clock_.now() + duration;
    pill_.orderOut();
}

void ScreenPresence::presentOnboarding() {
    isOnboardingActive_ = true;
    pill_.orderOut();
    windows_.presentOnboarding();
}

void ScreenPresence::closeOnboarding() {
    isOnboardingActive_ = false;
    windows_.closeOnboarding();
}

} // namespace lorvane
