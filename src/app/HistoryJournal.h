// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Preferences.h"
#include "core/TakeJournal.h"
#include "history/MacHistoryStore.h"

namespace lorvane {

/// Keeps finished takes in the history, and the streak that the backend told. Uses are not counted yet.
class HistoryJournal final : public TakeJournal {
 public:
    HistoryJournal(MacHistoryStore& history, Preferences& preferences)
        : history_(history), preferences_(preferences) {}

    void add(const DeliveredTake& take) override;
    void recordHit(const QString&, int) override {}
    void setGoalStreak(int streak) override;

 private:
    MacHistoryStore& history_;
    Preferences& preferences_;
};

} // namespace lorvane
