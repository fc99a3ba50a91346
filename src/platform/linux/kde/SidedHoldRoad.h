// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Signal.h"
#include "input/HoldRoad.h"

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <vector>

namespace lorvane {

/// The modifiers as the X server beside KWin is shown them: left and right by codes of their own
/// (HoldKeys.h), but a key that was part of a chord never goes up there, and its next press is missing.
struct ModifierSight {
    using Observer = std::function<void(int keyCode, bool isDown, Instant time)>;
    std::function<bool()> isOpen;
    std::function<Handle(Observer observer)> watch;
    /// The codes that are down, stale ones included.
    std::function<std::set<int>()> down;
};

/// The shortcut road of KDE with what the X server is shown besides: the shortcuts tell each press, but not
/// its side, and end it at its release or after another key; the X server knows the side and true releases.
/// Together they tell a side, a tap and a chord, and a hold begins at its press. Where the X server is shown
/// nothing, this is the shortcut road. Main thread.
class SidedHoldRoad final : public HoldRoad {
 public:
    /// How far apart the two tell of the same thing.
    static constexpr Duration together = std::chrono::milliseconds(50);
    /// For how long a press that the X server alone tells of may lack KWin's word. Shorter than a hold.
    static constexpr Duration untilTold = std::chrono::milliseconds(300);

    SidedHoldRoad(Clock& clock, HoldRoad& shortcuts, ModifierSight sight);
    SidedHoldRoad(const SidedHoldRoad&) = delete;
    SidedHoldRoad& operator=(const SidedHoldRoad&) = delete;
    ~SidedHoldRoad() override = default;

    [[nodiscard]] QString name() const override;
    [[nodiscard]] HoldOffer offer() const override;
    [[nodiscard]] Handle watch(std::vector<int> keyCodes,
                               std::function<void(const HoldEdge&)> observer) override;
    [[nodiscard]] bool isInForce(int keyCode) const override { return shortcuts_.isInForce(keyCode); }
    QCoro::Task<std::optional<bool>> isHeld(int keyCode, TaskScope scope) override;
    [[nodiscard]] Handle onChange(std::function<void()> changed) override {
        return changed_.subscribe(std::move(changed));
    }
    /// Called when the sight may have opened or closed.
    void reconsider();

 private:
    enum class State {
        up,
        deciding, ///< the shortcut went down, on which side is not known yet
        down,
        twins, ///< the shortcut went down by the left twin
    };
    struct Key {
        State state = State::up;
        /// The X server will tell its release, unless there is a chord.
        bool isSeen = false;
        bool awaitsShortcut = false;
        Instant pressed;
        Handle wait;
    };
    struct Watch {
        std::vector<int> keyCodes;
        std::function<void(const HoldEdge&)> observer;
        Handle shortcuts;
    };

    [[nodiscard]] bool isSided(int keyCode) const;
    void follow(const std::vector<int>& keyCodes);
    void endWatch(const std::shared_ptr<Watch>& watch);

    void onShortcut(const HoldEdge& edge);
    void shortcutDown(int keyCode, Instant time);
    void shortcutUp(int keyCode, Instant time);
    void onModifier(int keyCode, bool isDown, Instant time);
    void keySeen(int keyCode, bool isDown, Instant time);
    void awaitShortcut(int keyCode);
    void twinSeen(int keyCode);
    /// The X server has told nothing of a press.
    void decide(int keyCode);

    void begin(int keyCode, Instant time, bool isSeen);
    void end(int keyCode, HoldEdgeKind kind, Instant time, bool byOtherKey);
    void tell(const HoldEdge& edge);

    Clock& clock_;
    HoldRoad& shortcuts_;
    ModifierSight sight_;
    bool isOpen_;
    /// The watched modifiers that have sides.
    std::map<int, Key> keys_;
    /// As the X server has it.
    std::set<int> xDown_;
    std::map<int, Instant> xPressed_;
    Handle sightWatch_;
    std::shared_ptr<Watch> watch_;
    Signal<> changed_;
    Handle shortcutsChange_;
};

} // namespace lorvane
