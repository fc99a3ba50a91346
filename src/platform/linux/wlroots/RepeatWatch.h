// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "platform/linux/wlroots/CompositorSocket.h"

#include <functional>
#include <utility>

namespace lorvane {

/// Tells by the repeats of a held key whether it is still held alone: sway repeats a binding until its key
/// goes up or any other key moves. Main thread.
class RepeatWatch {
 public:
    /// `silent`: the repeats of the key have ended, or never begun. Every event until then has been told.
    RepeatWatch(Clock& clock, CompositorSocket& socket, std::function<void(bool hadRepeats)> silent)
        : clock_(clock), socket_(socket), silent_(std::move(silent)) {}

    /// Until the first repeat, as the configuration has it; zero when nothing repeats.
    void setDelay(Duration delay) { delay_ = delay; }
    [[nodiscard]] Duration delay() const { return delay_; }

    void pressed();
    /// Whether another press of the key can be one of its repeats; one that comes sooner is a press after a
    /// release that nobody told.
    [[nodiscard]] bool canBeRepeat() const;
    void repeated();
    void stop();

 private:
    void expectWithin(Duration time);
    void ask();

    Clock& clock_;
    CompositorSocket& socket_;
    std::function<void(bool hadRepeats)> silent_;
    Duration delay_ = std::chrono::milliseconds(600);
    Instant pressedAt_;
    Instant lastAt_;
    bool hadRepeats_ = false;
    /// Of the silence: a repeat that comes before the answer takes it back.
    std::uint64_t beat_ = 0;
    Handle silence_;
};

} // namespace lorvane
