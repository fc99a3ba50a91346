// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <chrono>

namespace lorvane::backend {

// How long to leave alone what has just failed: 0.1 s after the first failure, twice as long after each
// further one, 5 s at most.
class RetryPause {
 public:
    using Time = std::chrono::steady_clock::time_point;
    static constexpr std::chrono::milliseconds shortest{100};
    static constexpr std::chrono::milliseconds longest{5000};

    // `spread`, 0 to 1, cuts off up to a quarter, so that many who failed together do not come back together.
    void failed(Time now, double spread) {
        next_ = failing_ ? std::min(next_ * 2, longest) : shortest;
        failing_ = true;
        until_ = now + std::chrono::duration_cast<std::chrono::milliseconds>(next_ * (1 - spread / 4));
    }
    void succeeded() { failing_ = false; }
    bool failing() const { return failing_; }
    bool resting(Time now) const { return failing_ && now < until_; }

 private:
    bool failing_ = false;
    std::chrono::milliseconds next_ = shortest;
    Time until_{};
};

} // namespace lorvane::backend
