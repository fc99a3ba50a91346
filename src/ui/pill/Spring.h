// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

namespace lorvane {

/// A value that swings to its target. `response` is the time in seconds of one swing without damping; with a
/// damping of 1 it arrives without passing the target.
class Spring {
 public:
    struct Feel {
        double response;
        double damping;
        /// So near, and so slow a second, counts as arrived.
        double nearby;
    };

    Spring(Feel feel, double value) : feel_(feel), value_(value), target_(value) {}

    void setTarget(double target) { target_ = target; }
    void jump(double value);
    /// Exact for any step, so the motion does not depend on how often it is drawn.
    void advance(Duration step);

    [[nodiscard]] double value() const { return value_; }
    [[nodiscard]] double target() const { return target_; }
    [[nodiscard]] bool isAtRest() const { return value_ == target_ && velocity_ == 0; }

 private:
    Feel feel_;
    double value_;
    double target_;
    double velocity_ = 0;
};

} // namespace lorvane
