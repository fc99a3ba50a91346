// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "ui/pill/PillLayout.h"
#include "ui/pill/Spring.h"
#include "ui/pill/WaveModel.h"

#include <functional>

namespace lorvane {

/// Everything of the pill that moves, frame by frame. A timer runs only while something does. Main thread.
class PillMotion {
 public:
    struct Callbacks {
        /// 0 to 1; asked for once a frame while the wave shows.
        std::function<double()> level;
        /// Something is to be drawn anew.
        std::function<void()> changed;
    };

    PillMotion(Clock& clock, Callbacks callbacks);
    PillMotion(const PillMotion&) = delete;
    PillMotion& operator=(const PillMotion&) = delete;

    /// The capsule swings to the size; a wave starts from a flat line.
    void show(pillLayout::Content content, const QSizeF& size);
    /// Without motion sizes change at once, nothing turns, and the wave only tells how loud it is.
    void setCalm(bool calm);
    /// Where it is going, at once; and nothing moves while the pill is not on screen.
    void setShown(bool shown);

    [[nodiscard]] QSizeF size() const { return {width_.value(), height_.value()}; }
    [[nodiscard]] bool isResizing() const { return !width_.isAtRest() || !height_.isAtRest(); }
    /// 0 to 1, or a little more on the way: how far the content has come up, and the check mark popped.
    [[nodiscard]] double appearance() const { return appearance_.value(); }
    [[nodiscard]] double pop() const { return pop_.value(); }
    [[nodiscard]] const WaveModel::Bars& bars() const { return bars_; }
    /// Of the spinner, in full turns from 0 to 1.
    [[nodiscard]] double turn() const { return turn_; }
    [[nodiscard]] bool isRunning() const { return static_cast<bool>(frames_); }

 private:
    void finish();
    [[nodiscard]] bool isMoving() const;
    [[nodiscard]] bool isAlive() const;
    void runOrRest();
    void frame();
    void turnSpinner(Duration step);
    void moveWave();

    Clock& clock_;
    Callbacks callbacks_;
    bool isCalm_ = false;
    bool isShown_ = false;
    pillLayout::Content content_ = pillLayout::Content::restingBars;
    Spring width_;
    Spring height_;
    Spring appearance_;
    Spring pop_;
    WaveModel wave_;
    WaveModel::Bars bars_{};
    double turn_ = 0;
    Instant lastFrame_{};
    Handle frames_;
    Duration period_{};
};

} // namespace lorvane
