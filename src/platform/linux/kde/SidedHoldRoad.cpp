// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/kde/SidedHoldRoad.h"

#include "input/HoldKeys.h"
#include "input/HotkeyMonitor.h"

#include <algorithm>

namespace lorvane {

SidedHoldRoad::SidedHoldRoad(Clock& clock, HoldRoad& shortcuts, ModifierSight sight)
    : clock_(clock), shortcuts_(shortcuts), sight_(std::move(sight)), isOpen_(sight_.isOpen()),
      shortcutsChange_(shortcuts.onChange([this] { changed_.emit(); })) {}

QString SidedHoldRoad::name() const {
    return isOpen_ ? shortcuts_.name() + QStringLiteral(" with sides by XWayland") : shortcuts_.name();
}

bool SidedHoldRoad::isSided(int keyCode) const { return isOpen_ && leftTwinOf(keyCode) != 0; }

HoldOffer SidedHoldRoad::offer() const {
    HoldOffer offer = shortcuts_.offer();
    for (HoldKeyOffer& key : offer.keys) {
        if (isSided(key.keyCode)) {
            key.tellsSides = true;
            key.chords = ChordSight::told;
        }
    }
    return offer;
}

Handle SidedHoldRoad::watch(std::vector<int> keyCodes, std::function<void(const HoldEdge&)> observer) {
    follow(keyCodes);
    auto watch = std::make_shared<Watch>(Watch{keyCodes, std::move(observer), {}});
    watch->shortcuts =
        shortcuts_.watch(std::move(keyCodes), [this](const HoldEdge& edge) { onShortcut(edge); });
    watch_ = watch;
    return Handle([this, weak = std::weak_ptr(watch)] { endWatch(weak.lock()); });
}

void SidedHoldRoad::endWatch(const std::shared_ptr<Watch>& watch) {
    if (watch && watch == watch_) {
        watch_.reset();
        follow({});
    }
}

// A key that stays is followed without a gap.
void SidedHoldRoad::follow(const std::vector<int>& keyCodes) {
    const auto isWanted = [&](int code) {
        return isSided(code) && std::find(keyCodes.begin(), keyCodes.end(), code) != keyCodes.end();
    };
    std::erase_if(keys_, [&](const auto& key) { return !isWanted(key.first); });
    for (const int code : keyCodes) {
        if (isWanted(code)) {
            keys_.try_emplace(code);
        }
    }
    if (keys_.empty()) {
        sightWatch_.reset();
    } else if (!sightWatch_) {
        sightWatch_ =
            sight_.watch([this](int code, bool isDown, Instant time) { onModifier(code, isDown, time); });
        xDown_ = sight_.down();
        xPressed_.clear();
    }
}

// Whoever was told of a press ends it, since its key is offered as another kind from now on.
void SidedHoldRoad::reconsider() {
    if (isOpen_ != sight_.isOpen()) {
        isOpen_ = !isOpen_;
        follow(watch_ ? watch_->keyCodes : std::vector<int>());
        changed_.emit();
    }
}

void SidedHoldRoad::onShortcut(const HoldEdge& edge) {
    if (!keys_.contains(edge.keyCode)) {
        return tell(edge);
    }
    switch (edge.kind) {
    case HoldEdgeKind::down:
        return shortcutDown(edge.keyCode, edge.time);
    case HoldEdgeKind::up:
        return shortcutUp(edge.keyCode, edge.time);
    case HoldEdgeKind::lost:
        return end(edge.keyCode, HoldEdgeKind::lost, edge.time, false);
    }
}

void SidedHoldRoad::shortcutDown(int code, Instant time) {
    Key& key = keys_.at(code);
    if (key.state == State::down) {
        if (std::exchange(key.awaitsShortcut, false)) {
            key.wait.reset();
        }
        return;
    }
    const auto twin = xPressed_.find(leftTwinOf(code));
    if (twin != xPressed_.end() && time - twin->second < together) {
        key.state = State::twins;
        return;
    }
    key.state = State::deciding;
    key.pressed = time;
    key.wait = clock_.after(together, [this, code] { decide(code); });
}

// A key that the X server believes down is one whose release it has missed, and then it misses the press.
void SidedHoldRoad::decide(int code) {
    Key& key = keys_.at(code);
    const bool isStale = xDown_.contains(code);
    if (!isStale && xDown_.contains(leftTwinOf(code))) {
        key.state = State::twins;
        key.wait.reset();
    } else {
        begin(code, key.pressed, isStale);
    }
}

void SidedHoldRoad::shortcutUp(int code, Instant time) {
    if (keys_.at(code).state == State::deciding) {
        decide(code);
    }
    const auto found = keys_.find(code);
    if (found == keys_.end()) {
        return; // whoever was told has ended the watch
    }
    Key& key = found->second;
    if (key.state != State::down) {
        key.state = State::up;
        return;
    }
    // The X server's word is awaited, and Escape, whose own meaning comes first.
    key.awaitsShortcut = false;
    const bool isSeen = key.isSeen;
    const bool isChord = isSeen || time - key.pressed < seconds(HotkeyMonitor::tapThreshold);
    key.wait = clock_.after(together, [this, code, time, isSeen, isChord] {
        end(code, isSeen ? HoldEdgeKind::lost : HoldEdgeKind::up, time, isChord);
    });
}

void SidedHoldRoad::onModifier(int code, bool isDown, Instant time) {
    if (isDown) {
        xDown_.insert(code);
        xPressed_[code] = time;
    } else {
        xDown_.erase(code);
    }
    if (keys_.contains(code)) {
        return keySeen(code, isDown, time);
    }
    const auto found = std::find_if(keys_.begin(), keys_.end(),
                                    [code](const auto& key) { return leftTwinOf(key.first) == code; });
    if (found != keys_.end()) {
        twinSeen(found->first);
    }
}

void SidedHoldRoad::keySeen(int code, bool isDown, Instant time) {
    Key& key = keys_.at(code);
    if (isDown && key.state == State::down) {
        key.isSeen = true;
    } else if (isDown && key.state == State::deciding) {
        begin(code, key.pressed, true);
    } else if (isDown) {
        begin(code, time, true);
        awaitShortcut(code);
    } else if (key.state == State::deciding) {
        begin(code, key.pressed, true);
        end(code, HoldEdgeKind::up, time, false);
    } else {
        end(code, HoldEdgeKind::up, time, false);
    }
}

// KWin tells of each press alone. One that only the X server tells of belongs to a chord that has ended for
// KWin already, and then the X server never tells its end.
void SidedHoldRoad::awaitShortcut(int code) {
    const auto found = keys_.find(code);
    if (found != keys_.end() && found->second.state == State::down) {
        found->second.awaitsShortcut = true;
        found->second.wait =
            clock_.after(untilTold, [this, code] { end(code, HoldEdgeKind::lost, clock_.now(), true); });
    }
}

// Late news: the press was the twin's.
void SidedHoldRoad::twinSeen(int code) {
    Key& key = keys_.at(code);
    if (key.state == State::deciding) {
        key.state = State::twins;
        key.wait.reset();
    } else if (key.state == State::down && !key.isSeen) {
        end(code, HoldEdgeKind::lost, clock_.now(), true);
    }
}

void SidedHoldRoad::begin(int code, Instant time, bool isSeen) {
    Key& key = keys_.at(code);
    key.state = State::down;
    key.isSeen = isSeen;
    key.awaitsShortcut = false;
    key.pressed = time;
    key.wait.reset();
    tell({code, HoldEdgeKind::down, time});
}

void SidedHoldRoad::end(int code, HoldEdgeKind kind, Instant time, bool byOtherKey) {
    const auto found = keys_.find(code);
    if (found == keys_.end()) {
        return;
    }
    found->second.wait.reset();
    const State before = std::exchange(found->second.state, State::up);
    if (before != State::down) {
        return;
    }
    if (byOtherKey) {
        tell({firstOtherKeyCode, HoldEdgeKind::down, time});
    }
    tell({code, kind, time});
}

void SidedHoldRoad::tell(const HoldEdge& edge) {
    // The observer may end the watch.
    if (const auto watch = watch_) {
        watch->observer(edge);
    }
}

QCoro::Task<std::optional<bool>> SidedHoldRoad::isHeld(int /*keyCode*/, TaskScope /*scope*/) {
    co_return std::nullopt;
}

} // namespace lorvane
