// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>

namespace lorvane {

/// Time that stands still until a test moves it. Timers run inside `advance`, in the order in which they are
/// due.
class VirtualClock final : public Clock {
 public:
    [[nodiscard]] Instant now() const override { return Instant(Duration(elapsed_.load())); }
    /// 2026-01-05 10:00:00 UTC when the clock is made.
    [[nodiscard]] WallTime wallNow() const override;
    [[nodiscard]] Handle after(Duration delay, std::function<void()> work) override;
    [[nodiscard]] Handle every(Duration period, std::function<void()> work) override;

    /// Runs everything that falls due up to and including now + `duration`, timers made meanwhile included.
    void advance(Duration duration);
    /// Moves the time without running anything, as a busy main thread would.
    void jump(Duration duration) { elapsed_ += duration.count(); }
    /// Runs what is due now: work queued with a delay of zero.
    void settle() { advance(Duration::zero()); }
    [[nodiscard]] std::size_t pendingTimers() const { return timers_->size(); }

 private:
    struct Timer {
        Duration due;
        Duration period;
        std::shared_ptr<std::function<void()>> work;
    };
    using Timers = std::map<std::uint64_t, Timer>;
    Handle add(Duration delay, Duration period, std::function<void()> work);

    std::atomic<std::int64_t> elapsed_{0};
    std::uint64_t lastId_ = 0;
    std::shared_ptr<Timers> timers_ = std::make_shared<Timers>();
};

} // namespace lorvane
