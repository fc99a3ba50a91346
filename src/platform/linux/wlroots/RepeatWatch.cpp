// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wlroots/RepeatWatch.h"

#include <algorithm>

namespace lorvane {

namespace {

constexpr Duration soonest = std::chrono::milliseconds(100);
constexpr Duration patience = std::chrono::milliseconds(250);
/// Before the rate is known.
constexpr Duration slowestRate = std::chrono::seconds(1);

} // namespace

void RepeatWatch::pressed() {
    pressedAt_ = clock_.now();
    lastAt_ = pressedAt_;
    hadRepeats_ = false;
    if (delay_ > Duration::zero()) {
        expectWithin(delay_ + patience);
    }
}

bool RepeatWatch::canBeRepeat() const { return clock_.now() - pressedAt_ >= soonest; }

void RepeatWatch::repeated() {
    const Instant now = clock_.now();
    const Duration period = now - lastAt_;
    lastAt_ = now;
    expectWithin(hadRepeats_ ? std::clamp(3 * period, patience, slowestRate) : slowestRate);
    hadRepeats_ = true;
}

void RepeatWatch::stop() {
    ++beat_;
    silence_.reset();
}

void RepeatWatch::expectWithin(Duration time) {
    ++beat_;
    silence_ = clock_.after(time, [this] { ask(); });
}

/// The main thread may have been late, and repeats lie in the socket: what was told before the answer counts.
void RepeatWatch::ask() {
    socket_.request(ipcType::getVersion, {}, [this, beat = beat_](const QJsonDocument&) {
        if (beat == beat_) {
            silent_(hadRepeats_);
        }
    });
}

} // namespace lorvane
