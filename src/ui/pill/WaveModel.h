// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

#include <array>
#include <cstddef>
#include <vector>

namespace lorvane {

/// The bars that dance to a voice: the newest level in bar 0, older ones to its right, so that speech runs
/// across. Made anew for each recording, which starts as a flat line.
class WaveModel {
 public:
    static constexpr std::size_t count = 11;
    static constexpr std::size_t remembered = 2 * count + 1;
    static constexpr double ticksPerSecond = 60;
    static constexpr double tallest = 1.15;
    using Bars = std::array<double, count>;

    WaveModel();
    /// One sixtieth of a second passes, whatever the real time.
    void tick(double level);
    /// 0 to `tallest`: how far each bar is up.
    [[nodiscard]] const Bars& bars() const { return bars_; }
    [[nodiscard]] std::size_t historySize() const { return history_.size(); }

    /// For those who want no motion: bars that only tell how loud it is.
    [[nodiscard]] static Bars still(double level);

 private:
    Bars bars_{};
    Bars velocity_{};
    std::vector<double> history_;
    double clock_ = 0;
};

} // namespace lorvane
