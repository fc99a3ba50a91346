// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "base/Handle.h"
#include "base/Task.h"

#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace lorvane {

/// What becomes of the edges of a key when another key goes down while it is held.
enum class ChordSight {
    told,         ///< the other key is told as an edge of its own
    endsHold,     ///< the release is told at the other key's press, not at the release
    losesRelease, ///< the release is never told
    unseen,       ///< press and release stay true, and nothing shows that there was a chord
    dedicated,    ///< the key is part of no chord: its edges are true, other keys do not matter
};

/// One key that a road can watch.
struct HoldKeyOffer {
    /// As in KeyEvents.h: a hotkey's code (the key of `fn` has the code 63), or `keyCode::escape`.
    int keyCode = 0;
    /// False when the left twin gives the same edges.
    bool tellsSides = true;
    ChordSight chords = ChordSight::told;

    friend bool operator==(const HoldKeyOffer&, const HoldKeyOffer&) = default;
};

/// What a road can do at the moment.
struct HoldOffer {
    /// None when the road is not there.
    std::vector<HoldKeyOffer> keys;
    /// Why keys are missing, in plain words for log and doctor; empty when none is.
    QString obstacle;

    friend bool operator==(const HoldOffer&, const HoldOffer&) = default;
};

enum class HoldEdgeKind {
    down, ///< repeats of a held key may be told as well, each as one more press
    up,
    lost, ///< the key was down and cannot be seen any more (focus left, keyboard unplugged)
};

/// A key that moved. Keys of other codes than those watched are told going down, and modifiers among them
/// going up too, by a road whose chords are `told`, and by no other road.
struct HoldEdge {
    int keyCode = 0;
    HoldEdgeKind kind = HoldEdgeKind::down;
    /// When the key moved, on the program's clock; the time of arrival where the road knows no better.
    Instant time;
};

/// One way by which the edges of a key reach the program wherever the keyboard is. Nothing is taken from
/// anyone where that can be had. Which keys mean what, and what becomes of edges that never come, is not its
/// business (HoldRoadKeyEvents). Main thread; nothing throws.
class HoldRoad {
 public:
    virtual ~HoldRoad() = default;

    /// For log and doctor.
    [[nodiscard]] virtual QString name() const = 0;
    /// From what was last heard: never waits. Changes are told by `onChange`.
    [[nodiscard]] virtual HoldOffer offer() const = 0;
    /// Edges of these keys until the handle ends, never inside this call. Keys that are not in the offer are
    /// passed over. One watch at a time: a new one takes the place of the old one, whose handle then does
    /// nothing; a key that both have is watched without a gap, so that a press seen by the old one is ended
    /// by the new one (Escape is added while the hold key is down). When the road goes, the watch stays and
    /// tells nothing until it is back. The observer may begin and end watches.
    [[nodiscard]] virtual Handle watch(std::vector<int> keyCodes,
                                       std::function<void(const HoldEdge&)> observer) = 0;
    /// Whether a watched key is watched in truth: who tells of it has taken the watch. Only then is the key
    /// counted on. True at once where nobody has to take it. A change is told by `onChange`.
    [[nodiscard]] virtual bool isInForce(int /*keyCode*/) const { return true; }
    /// Whether that key (either side where sides are not told apart) is down now; absent when it cannot be
    /// asked. Answers within 150 ms.
    virtual QCoro::Task<std::optional<bool>> isHeld(int keyCode, TaskScope scope) = 0;
    /// Told after `offer` or `isInForce` has changed.
    [[nodiscard]] virtual Handle onChange(std::function<void()> changed) = 0;
};

} // namespace lorvane
