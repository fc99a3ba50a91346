// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/pulse/ChimeSound.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace lorvane {

namespace {

constexpr double duration = 0.34;
constexpr double attack = 0.006;
constexpr double release = 0.04;
constexpr double peak = 0.16;

// A tone that dies away; `fade` is the time in which it loses two thirds.
double partial(double time, double hertz, double fade) {
    return std::sin(2 * std::numbers::pi * hertz * time) * std::exp(-time / fade);
}

} // namespace

// Two partials a fifth apart, the upper one weaker and shorter; both ends are eased so that nothing clicks.
std::vector<std::int16_t> chimeSound() {
    std::vector<std::int16_t> samples(static_cast<std::size_t>(duration * chimeRate));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double time = static_cast<double>(i) / chimeRate;
        const double easing = std::min({1.0, time / attack, (duration - time) / release});
        const double sound = 0.7 * partial(time, 880.0, 0.11) + 0.3 * partial(time, 1'320.0, 0.06);
        samples[i] = static_cast<std::int16_t>(std::lround(sound * easing * peak * 32'767));
    }
    return samples;
}

} // namespace lorvane
