// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "storage/Storage.h"

#include <optional>
#include <vector>

namespace lorvane::backend {

struct DailyGoal {
    std::int64_t phoneWords = 0; // of today
    std::int64_t goal = 0;
    bool met = false; // today
    std::int64_t streak =
        0; // days in a row that met it, up to today, or up to yesterday as long as today has not
};

// `days`: the newest first. Nothing for who never dictated on a telephone, and for a goal of 0.
std::optional<DailyGoal> goalOf(const std::vector<DayWords>& days, std::int64_t today, std::int64_t goal);

} // namespace lorvane::backend
