// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/pill/WaveModel.h"

#include <algorithm>
#include <cmath>

namespace lorvane {

namespace {

constexpr double centre = (WaveModel::count - 1) * 0.5;
/// What a bar keeps of its velocity, and how strongly it is drawn to where it should be.
constexpr double keep = 0.46;
constexpr double pull = 0.46;

double amplitude(double level) { return std::pow(level, 0.75); }

/// Full in the middle, 0.42 at the ends.
double envelope(std::size_t bar) {
    return (1 - std::abs(static_cast<double>(bar) - centre) / centre) * 0.58 + 0.42;
}

double ripple(std::size_t bar, double clock) {
    const auto i = static_cast<double>(bar);
    const double a = std::sin(2.3 * i + (4.3 * i + 9.8) * clock);
    const double b = std::sin((1.9 * i + 4.2) * clock);
    return std::abs(b * (a * 0.45) + 0.55);
}

} // namespace

WaveModel::WaveModel() {
    history_.reserve(remembered + 1);
    history_.assign(remembered, 0);
}

void WaveModel::tick(double level) {
    clock_ += 1 / ticksPerSecond;
    history_.push_back(std::clamp(level, 0.0, 1.0));
    if (history_.size() > remembered) {
        history_.erase(history_.begin());
    }
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t newest = history_.size() - 1;
        const double sample = history_[newest - std::min(newest, 2 * i)];
        const double target = envelope(i) * amplitude(sample) * ripple(i, clock_);
        velocity_[i] = velocity_[i] * keep + (target - bars_[i]) * pull;
        bars_[i] = std::clamp(bars_[i] + velocity_[i], 0.0, tallest);
    }
}

WaveModel::Bars WaveModel::still(double level) {
    Bars bars{};
    for (std::size_t i = 0; i < count; ++i) {
        bars[i] = envelope(i) * amplitude(std::clamp(level, 0.0, 1.0));
    }
    return bars;
}

} // namespace lorvane
