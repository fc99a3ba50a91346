// SPDX-License-Identifier: GPL-3.0-or-later
#include "input/HoldPress.h"

#include "input/HotkeyMonitor.h"

#include <algorithm>
#include <utility>

namespace lorvane {

namespace {

/// No finger lets go so soon.
constexpr Duration together = std::chrono::milliseconds(10);
/// A release that is lost this soon was lost to a chord.
constexpr Duration chordWindow = std::chrono::seconds(1);

bool startsAtOnce(ChordSight chords) { return chords == ChordSight::told || chords == ChordSight::dedicated; }

} // namespace

HoldPress::HoldPress(Clock& clock, HoldRoad& road, HoldKeyOffer key, HoldPressListener listener)
    : clock_(clock), road_(road), key_(key), listener_(std::move(listener)) {}

bool HoldPress::tellsTaps(ChordSight chords) {
    return startsAtOnce(chords) || chords == ChordSight::losesRelease;
}

void HoldPress::handle(HoldEdgeKind kind, Instant told) {
    const Instant earliest = state_ == State::up ? told : pressedAt_;
    const Instant time = std::min(std::max(told, earliest), clock_.now());
    switch (kind) {
    case HoldEdgeKind::down:
        return press(time);
    case HoldEdgeKind::up:
        return release(time);
    case HoldEdgeKind::lost:
        if (state_ == State::down) {
            return loseSight(time, false);
        }
        return dropPress();
    }
}

void HoldPress::end() {
    if (state_ == State::down) {
        tellUp(releasing_.value_or(clock_.now()));
    } else {
        dropPress();
    }
}

void HoldPress::noteOtherKey(Instant time) {
    broken_ = broken_ || (state_ == State::down && time - pressedAt_ < chordWindow);
}

// A press of a key that is down is a repeat, or the release before it was lost. In both cases the hold goes
// on and ends with the next release: what is spoken meanwhile is part of it. But a hold that another key
// broke is over, and a key does not repeat after another one.
void HoldPress::press(Instant time) {
    if (releasing_) {
        tellUp(*releasing_);
    } else if (broken_) {
        tellUp(time);
    }
    if (state_ != State::up) {
        return;
    }
    pressedAt_ = time;
    if (startsAtOnce(key_.chords)) {
        return tellDown();
    }
    state_ = State::waiting;
    const Duration rest = chordThreshold - (clock_.now() - time);
    wait_ = clock_.after(std::max(rest, Duration::zero()), [this] { outlasted(); });
}

void HoldPress::release(Instant time) {
    if (state_ == State::up || releasing_) {
        return;
    }
    countPressWithRelease(time);
    if (state_ == State::waiting) {
        dropPress();
        if (tellsTaps(key_.chords)) {
            tellDown();
            tellUp(time);
        }
    } else if (key_.chords == ChordSight::endsHold) {
        loseSight(time, true);
    } else {
        tellUp(time);
    }
}

void HoldPress::countPressWithRelease(Instant released) {
    const bool counts = key_.chords != ChordSight::told && released - pressedAt_ < together;
    pressesWithRelease_ = counts ? pressesWithRelease_ + 1 : 0;
}

void HoldPress::outlasted() {
    ask([this](std::optional<bool> held) {
        if (held.value_or(true)) {
            tellDown();
        } else {
            dropPress();
        }
    });
}

void HoldPress::tellDown() {
    wait_.reset();
    state_ = State::down;
    missedAt_.reset();
    watchState();
    armLimit();
    listener_.moved(true, pressedAt_);
}

void HoldPress::tellUp(Instant time) {
    const bool maybeChord =
        !tellsTaps(key_.chords) && time - pressedAt_ < seconds(HotkeyMonitor::tapThreshold);
    dropPress();
    if (maybeChord) {
        listener_.otherKey(time);
    }
    listener_.moved(false, time);
}

void HoldPress::dropPress() {
    state_ = State::up;
    broken_ = false;
    releasing_.reset();
    wait_.reset();
    stateWatch_.reset();
    limit_.reset();
    query_ = {};
}

// A little later: what took the key away may be Escape, and its own meaning comes first.
void HoldPress::loseSight(Instant time, bool otherKeyIfHeld) {
    releasing_ = time;
    stateWatch_.reset();
    wait_ = clock_.after(lostGrace, [this, time, otherKeyIfHeld] { confirmRelease(time, otherKeyIfHeld); });
}

void HoldPress::confirmRelease(Instant time, bool otherKeyIfHeld) {
    releasing_ = time;
    stateWatch_.reset();
    ask([this, time, otherKeyIfHeld](std::optional<bool> held) {
        if (!held.value_or(false)) {
            return tellUp(time);
        }
        releasing_.reset();
        watchState();
        if (otherKeyIfHeld) {
            noteOtherKey(time);
            listener_.otherKey(time);
        }
    });
}

void HoldPress::watchState() {
    stateWatch_ = clock_.every(statePeriod, [this] {
        if (!query_.isRunning()) {
            const Instant asked = clock_.now();
            ask([this, asked](std::optional<bool> held) { stateIs(held, asked); });
        }
    });
}

void HoldPress::stateIs(std::optional<bool> held, Instant asked) {
    if (!held) {
        stateWatch_.reset();
        return;
    }
    if (*held) {
        missedAt_.reset();
        armLimit();
        return;
    }
    // The release may be on its way and knows the true time.
    if (!missedAt_) {
        missedAt_ = asked;
        return;
    }
    const Instant missed = *missedAt_;
    if (key_.chords == ChordSight::losesRelease && missed - pressedAt_ < chordWindow) {
        listener_.otherKey(missed);
    }
    tellUp(missed);
}

void HoldPress::armLimit() {
    limit_ = clock_.after(key_.chords == ChordSight::losesRelease ? unsureLimit : limit,
                          [this] { tellUp(clock_.now()); });
}

void HoldPress::ask(std::function<void(std::optional<bool> held)> answered) {
    query_ = startTask([this, answered = std::move(answered)](TaskScope scope) -> QCoro::Task<void> {
        const std::optional<bool> held = co_await road_.isHeld(key_.keyCode, scope);
        answered(held);
    });
}

} // namespace lorvane
