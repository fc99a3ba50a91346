// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Foundation.h"
#include "core/Presence.h"
#include "core/TakeJournal.h"

#include <functional>

namespace lorvane {

/// No pill is drawn; the phase is followed over the session bus, and notices are notifications.
class NoPill final : public Pill {
 public:
    void show() override {}
    void orderOut() override {}
};

/// The program has no windows. The first run has nothing to show, so it counts as completed as soon as it is
/// asked for.
class NoWindows final : public Windows {
 public:
    explicit NoWindows(const Foundation& foundation) : foundation_(foundation) {}

    /// Called, some moments after it was asked for, in place of the first run.
    std::function<void()> onFirstRunOver;

    void openHomeWindow() override;
    void presentOnboarding() override;
    void closeOnboarding() override {}
    void openFeedback(const QString& context) override;
    void openWhatsNew() override;
    void applyAppearance(const QString&) override {}

 private:
    void sayMissing(const QString& what);

    Foundation foundation_;
    Handle firstRun_;
};

/// Keeps of a take only the streak that the backend told. Takes themselves are kept nowhere.
class StreakJournal final : public TakeJournal {
 public:
    explicit StreakJournal(Preferences& preferences) : preferences_(preferences) {}
    void add(const DeliveredTake&) override {}
    void recordHit(const QString&, int) override {}
    void setGoalStreak(int streak) override;

 private:
    Preferences& preferences_;
};

} // namespace lorvane
