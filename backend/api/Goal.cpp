// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Goal.h"

namespace lorvane::backend {

std::optional<DailyGoal> goalOf(const std::vector<DayWords>& days, std::int64_t today, std::int64_t goal) {
    if (days.empty() || goal <= 0)
        return std::nullopt;
    DailyGoal record;
    record.goal = goal;
    if (days.front().day == today)
        record.phoneWords = days.front().words;
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
