// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/TakeJournal.h"

#include <optional>
#include <utility>
#include <vector>

namespace lorvane {

/// A journal in memory.
class FakeTakeJournal final : public TakeJournal {
 public:
    void add(const DeliveredTake& take) override { takes.insert(takes.begin(), take); }
    void recordHit(const QString& application, int words) override { hits.emplace_back(application, words); }
    void setGoalStreak(int streak) override { goalStreak = streak; }

    /// The newest first.
    std::vector<DeliveredTake> takes;
    std::vector<std::pair<QString, int>> hits;
    std::optional<int> goalStreak;
};

} // namespace lorvane
