// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/PlainPresence.h"

#include "base/PreferenceCatalogue.h"

namespace lorvane {

void NoWindows::openHomeWindow() { sayMissing(QStringLiteral("home")); }

void NoWindows::presentOnboarding() {
    firstRun_ = foundation_.clock.after(Duration::zero(), [this] {
        foundation_.preferences.set(preference::onboarded, true);
        onFirstRunOver();
    });
}

void NoWindows::openFeedback(const QString&) { sayMissing(QStringLiteral("feedback")); }

void NoWindows::openWhatsNew() { sayMissing(QStringLiteral("what's new")); }

void NoWindows::sayMissing(const QString& what) {
    foundation_.log.consoleLog(QStringLiteral("[lorvane] there is no %1 window yet").arg(what));
}

void StreakJournal::setGoalStreak(int streak) { preferences_.set(preference::goalStreak, streak); }

} // namespace lorvane
