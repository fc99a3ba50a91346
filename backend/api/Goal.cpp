// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Goal.h"

#include <algorithm>

namespace lorvane::backend {

std::optional<DailyGoal> goalOf(const std::vector<DayWords>& days, std::int64_t today, std::int64_t goal) {
    if (days.empty() || goal <= 0)
        return std::nullopt;
    DailyGoal record;
    record.goal = goal;
    // Not the newest when the clock was set back.
    const auto now =
        std::find_if(days.begin(), days.end(), [today](const auto& entry) { return entry.day == today; });
    record.phoneWords = now == days.end() ? 0 : now->words;
    record.met = record.phoneWords >= goal;
    auto expected = record.met ? today : today - 1;
    for (const auto& entry : days) {
        if (entry.day > expected)
            continue;
        if (entry.day < expected || entry.words < goal)
            break;
        ++record.streak;
        --expected;
    }
    return record;
}

} // namespace lorvane::backend
