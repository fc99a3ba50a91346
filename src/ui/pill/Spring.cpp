// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/pill/Spring.h"

#include <cmath>
#include <numbers>

namespace lorvane {

void Spring::jump(double value) {
    value_ = value;
    target_ = value;
    velocity_ = 0;
}

void Spring::advance(Duration step) {
    const double time = inSeconds(step);
    const double own = 2 * std::numbers::pi / feel_.response;
    const double decay = feel_.damping * own;
    const double away = value_ - target_;
    const double push = velocity_ + decay * away;
    const double fade = std::exp(-decay * time);
    if (feel_.damping < 1) {
        const double swing = own * std::sqrt(1 - feel_.damping * feel_.damping);
        const double c = std::cos(swing * time);
        const double s = std::sin(swing * time);
        const double now = fade * (away * c + push / swing * s);
        velocity_ = fade * (push * c - away * swing * s) - decay * now;
        value_ = target_ + now;
    } else {
        const double now = fade * (away + push * time);
        velocity_ = fade * push - decay * now;
        value_ = target_ + now;
    }
    if (std::abs(value_ - target_) < feel_.nearby && std::abs(velocity_) < feel_.nearby / 0.016) {
        jump(target_);
    }
}

} // namespace lorvane
