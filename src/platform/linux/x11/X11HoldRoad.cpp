// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11HoldRoad.h"

#include "input/KeyEvents.h"

namespace lorvane {

X11HoldRoad::X11HoldRoad(X11Connection& connection, X11RawKeys& keys, Clock& clock, World world)
    : keys_(keys), clock_(clock), world_(std::move(world)),
      lost_(connection.onLost([this] { reconsider(); })) {}

HoldOffer X11HoldRoad::offer() const {
    HoldOffer offer;
    if (keys_.isPossible() && world_.isOpen()) {
        for (const int code : {keyCode::rightCommand, keyCode::rightOption, keyCode::rightShift,
                               keyCode::rightControl, keyCode::escape}) {
            offer.keys.push_back({code, true, ChordSight::told});
        }
    }
    return offer;
}

Handle X11HoldRoad::watch(std::vector<int> /*keyCodes*/, std::function<void(const HoldEdge&)> observer) {
    auto watch = std::make_shared<Watch>(Watch{std::move(observer), {}});
    watch->keys = keys_.watch([this](const X11KeyEdge& edge) { onEdge(edge); });
    watch_ = watch; // the old one ends after the new one has begun
    return Handle([this, weak = std::weak_ptr(watch)] {
        if (const auto ended = weak.lock(); ended && ended == watch_) {
            watch_.reset();
            down_.clear();
        }
    });
}

void X11HoldRoad::onEdge(const X11KeyEdge& edge) {
    const KeyMeaning meaning = meaningOf(edge.key, std::nullopt);
    if (meaning.sort == KeyMeaning::Sort::lock || (edge.isPress && world_.areKeysOurs())) {
        return;
    }
    if (meaning.sort == KeyMeaning::Sort::modifier) {
        const bool moved = edge.isPress ? down_.insert(meaning.code).second : down_.erase(meaning.code) > 0;
        if (moved) {
            tell({meaning.code, edge.isPress ? HoldEdgeKind::down : HoldEdgeKind::up, edge.time});
        }
    } else if (edge.isPress) {
        tell({meaning.code, HoldEdgeKind::down, edge.time});
    }
}

void X11HoldRoad::reconsider() {
    if (offer().keys.empty()) {
        loseAll();
    }
    changed_.emit();
}

void X11HoldRoad::loseAll() {
    const std::set<int> lost = std::exchange(down_, {});
    for (const int code : lost) {
        tell({code, HoldEdgeKind::lost, clock_.now()});
    }
}

void X11HoldRoad::tell(const HoldEdge& edge) {
    // The observer may end the watch.
    if (const auto watch = watch_) {
        watch->observer(edge);
    }
}

QCoro::Task<std::optional<bool>> X11HoldRoad::isHeld(int /*keyCode*/, TaskScope /*scope*/) {
    co_return std::nullopt;
}

} // namespace lorvane
