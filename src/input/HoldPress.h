// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "input/HoldRoad.h"

#include <functional>
#include <optional>

namespace lorvane {

/// What a press on a road is told as.
struct HoldPressListener {
    /// The key went down or up, at that time. Down and up take turns, and every down is followed by an up.
    std::function<void(bool isDown, Instant time)> moved;
    /// It shows that another key went down while this one was held.
    std::function<void(Instant time)> otherKey;
};

/// The presses of one key on one road, made of edges of which some never come. Repeats are dropped. Where a
/// chord cannot be told from a hold, a press is told only when it outlasts `chordThreshold`. A release that
/// does not come is found by asking the road twice, or is taken for granted at a limit. The listener must not
/// destroy this. Main thread.
class HoldPress {
 public:
    /// A chord such as Ctrl+C is mostly over in this time.
    static constexpr Duration chordThreshold = std::chrono::milliseconds(250);
    /// How long a key that cannot be seen any more counts as down yet.
    static constexpr Duration lostGrace = std::chrono::milliseconds(50);
    static constexpr Duration statePeriod = std::chrono::milliseconds(100);
    /// The longest hold where the release may be lost and nobody can be asked, and the longest where it comes
    /// unless something broke.
    static constexpr Duration unsureLimit = std::chrono::minutes(2);
    static constexpr Duration limit = std::chrono::minutes(10);

    HoldPress(Clock& clock, HoldRoad& road, HoldKeyOffer key, HoldPressListener listener);
    HoldPress(const HoldPress&) = delete;
    HoldPress& operator=(const HoldPress&) = delete;

    void handle(HoldEdgeKind kind, Instant time);
    /// Another key went down, as a road that tells such keys says.
    void noteOtherKey(Instant time);
    /// The key cannot be followed any more: one that is down counts as released now.
    void end();
    [[nodiscard]] bool isDown() const { return state_ == State::down; }
    [[nodiscard]] const HoldKeyOffer& key() const { return key_; }
    /// Several presses in a row came together with their release: holding cannot be seen on this road.
    [[nodiscard]] bool isBlindToHolding() const { return pressesWithRelease_ >= blindAfter; }

    /// A short press on such a road was that key alone, and not a part of a chord.
    [[nodiscard]] static bool tellsTaps(ChordSight chords);

 private:
    enum class State { up, waiting, down };
    static constexpr int blindAfter = 3;

    void press(Instant time);
    void release(Instant time);
    void countPressWithRelease(Instant released);
    /// The wait is over and the key was not let go.
    void outlasted();
    void tellDown();
    void tellUp(Instant time);
    void dropPress();
    /// The road said that it went up, or that it lost sight of it: true only if it is not still held.
    void loseSight(Instant time, bool otherKeyIfHeld);
    void confirmRelease(Instant time, bool otherKeyIfHeld);
    void watchState();
    void stateIs(std::optional<bool> held, Instant asked);
    void armLimit();
    void ask(std::function<void(std::optional<bool> held)> answered);

    Clock& clock_;
    HoldRoad& road_;
    HoldKeyOffer key_;
    HoldPressListener listener_;
    State state_ = State::up;
    Instant pressedAt_;
    int pressesWithRelease_ = 0;
    /// Another key has made a chord of this press.
    bool broken_ = false;
    /// A release that is being confirmed.
    std::optional<Instant> releasing_;
    /// When the state was first seen up in spite of no release.
    std::optional<Instant> missedAt_;
    Handle wait_;
    Handle stateWatch_;
    Handle limit_;
    TaskHandle query_;
};

} // namespace lorvane
