// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

#include <deque>

namespace lorvane {

/// Whether a child that died is started again: at most five times in any one minute.
class RestartPolicy {
 public:
    static constexpr std::size_t mostRestarts = 5;
    static constexpr Duration window = std::chrono::minutes(1);

    /// Counts a restart at `now` and allows it, or refuses it.
    [[nodiscard]] bool allowRestart(Instant now);

 private:
    std::deque<Instant> restarts_;
};

} // namespace lorvane
