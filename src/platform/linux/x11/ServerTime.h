// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

#include <cstdint>
#include <optional>

namespace lorvane {

/// Puts the times of the X server (milliseconds in 32 bits, which start again every 49.7 days) on the
/// program's clock. Differences between times stay exact; what is not known exactly is how the two clocks
/// stand to each other, and each pair of times that was seen together can only bring that closer.
class ServerTime {
 public:
    /// The server's time was `serverTime` at or before `now`.
    void observe(std::uint32_t serverTime, Instant now);
    /// When on the program's clock the server's time was `serverTime`; never after `now`.
    [[nodiscard]] Instant at(std::uint32_t serverTime, Instant now);

 private:
    struct Pair {
        std::uint32_t server = 0;
        Instant local;
    };
    [[nodiscard]] Instant map(std::uint32_t serverTime) const;

    std::optional<Pair> nearest_;
};

} // namespace lorvane
