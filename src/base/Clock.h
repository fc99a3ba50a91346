// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Handle.h"

#include <chrono>
#include <functional>

namespace lorvane {

using Duration = std::chrono::nanoseconds;
/// A point on a clock that never jumps; only differences mean anything.
using Instant = std::chrono::time_point<std::chrono::steady_clock, Duration>;
using WallTime = std::chrono::sys_time<Duration>;

constexpr Duration seconds(double count) {
    return std::chrono::round<Duration>(std::chrono::duration<double>(count));
}
constexpr double inSeconds(Duration duration) { return std::chrono::duration<double>(duration).count(); }

/// The program's only clock and only source of timers. `now` and `wallNow` may be read from any thread;
/// timers are made, run and ended on the main thread. A timer never runs inside the call that makes it.
class Clock {
 public:
    virtual ~Clock() = default;

    [[nodiscard]] virtual Instant now() const = 0;
    [[nodiscard]] virtual WallTime wallNow() const = 0;
    /// Runs `work` once, `delay` from now, unless the handle has ended.
    [[nodiscard]] virtual Handle after(Duration delay, std::function<void()> work) = 0;
    /// Runs `work` every `period`, the first time one period from now.
    [[nodiscard]] virtual Handle every(Duration period, std::function<void()> work) = 0;
};

} // namespace lorvane
