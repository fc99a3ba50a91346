// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

namespace lorvane {

/// The real clock, with timers of the Qt event loop. Timers are precise to about a millisecond.
class QtClock final : public Clock {
 public:
    [[nodiscard]] Instant now() const override;
    [[nodiscard]] WallTime wallNow() const override;
    [[nodiscard]] Handle after(Duration delay, std::function<void()> work) override;
    [[nodiscard]] Handle every(Duration period, std::function<void()> work) override;
};

} // namespace lorvane
