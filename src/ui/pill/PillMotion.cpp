// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/pill/PillMotion.h"

#include <algorithm>
#include <cmath>

namespace lorvane {

namespace {

using pillLayout::Content;

/// The capsule's own motion; in points.
constexpr Spring::Feel activate{0.32, 0.7, 0.05};
constexpr Spring::Feel fadeIn{0.2, 1, 0.005};
constexpr Spring::Feel popIn{0.32, 0.55, 0.005};
constexpr Duration frameTime = seconds(1 / WaveModel::ticksPerSecond);
/// How often a wave without motion looks at the level.
constexpr Duration calmTime = seconds(0.2);
/// A main thread that was busy for longer does not make the capsule jump.
constexpr Duration longestStep = seconds(0.05);
constexpr double turnsPerSecond = 0.9;

const QSizeF atRest = pillLayout::sizeOf(Content::restingBars, 0);

} // namespace

PillMotion::PillMotion(Clock& clock, Callbacks callbacks)
    : clock_(clock), callbacks_(std::move(callbacks)), width_(activate, atRest.width()),
      height_(activate, atRest.height()), appearance_(fadeIn, 1), pop_(popIn, 1) {}

void PillMotion::show(Content content, const QSizeF& size) {
    width_.setTarget(size.width());
    height_.setTarget(size.height());
    if (content != content_) {
        content_ = content;
        appearance_.jump(0);
        appearance_.setTarget(1);
        pop_.jump(content == Content::done ? 0 : 1);
        pop_.setTarget(1);
        wave_ = WaveModel();
        bars_ = {};
        turn_ = 0;
    }
    runOrRest();
    callbacks_.changed();
}

void PillMotion::setCalm(bool calm) {
    isCalm_ = calm;
    runOrRest();
    callbacks_.changed();
}

void PillMotion::setShown(bool shown) {
    isShown_ = shown;
    runOrRest();
}

void PillMotion::finish() {
    for (Spring* spring : {&width_, &height_, &appearance_, &pop_}) {
        spring->jump(spring->target());
    }
}

bool PillMotion::isMoving() const { return isResizing() || !appearance_.isAtRest() || !pop_.isAtRest(); }

bool PillMotion::isAlive() const {
    return content_ == Content::wave || (content_ == Content::progress && !isCalm_);
}

void PillMotion::runOrRest() {
    if (isCalm_ || !isShown_) {
        finish();
    }
    if (!isShown_ || (!isMoving() && !isAlive())) {
        frames_.reset();
        return;
    }
    const Duration period = isCalm_ ? calmTime : frameTime;
    if (!frames_ || period_ != period) {
        period_ = period;
        lastFrame_ = clock_.now();
        frames_ = clock_.every(period, [this] { frame(); });
    }
}

void PillMotion::frame() {
    const Instant now = clock_.now();
    const Duration step = std::min(now - lastFrame_, longestStep);
    lastFrame_ = now;
    for (Spring* spring : {&width_, &height_, &appearance_, &pop_}) {
        if (!spring->isAtRest()) {
            spring->advance(step);
        }
    }
    if (content_ == Content::wave) {
        moveWave();
    } else if (content_ == Content::progress) {
        turnSpinner(step);
    }
    runOrRest();
    callbacks_.changed();
}

void PillMotion::turnSpinner(Duration step) {
    turn_ = std::fmod(turn_ + turnsPerSecond * inSeconds(step), 1);
}

void PillMotion::moveWave() {
    if (isCalm_) {
        bars_ = WaveModel::still(callbacks_.level());
        return;
    }
    wave_.tick(callbacks_.level());
    bars_ = wave_.bars();
}

} // namespace lorvane
