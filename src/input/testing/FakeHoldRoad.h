// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Signal.h"
#include "input/HoldRoad.h"

#include <memory>
#include <set>
#include <utility>

namespace lorvane {

/// A road whose edges, state and offer are what the test says.
class FakeHoldRoad final : public HoldRoad {
 public:
    FakeHoldRoad(Clock& clock, QString name, HoldOffer offer)
        : clock_(clock), name_(std::move(name)), offer_(std::move(offer)) {}

    [[nodiscard]] QString name() const override { return name_; }
    [[nodiscard]] HoldOffer offer() const override { return offer_; }
    [[nodiscard]] Handle watch(std::vector<int> keyCodes,
                               std::function<void(const HoldEdge&)> observer) override;
    [[nodiscard]] bool isInForce(int keyCode) const override { return !unconfirmed_.contains(keyCode); }
    QCoro::Task<std::optional<bool>> isHeld(int keyCode, TaskScope scope) override;
    [[nodiscard]] Handle onChange(std::function<void()> changed) override {
        return changed_.subscribe(std::move(changed));
    }

    void setOffer(HoldOffer offer) {
        offer_ = std::move(offer);
        changed_.emit();
    }
    void setInForce(int keyCode, bool isInForce) {
        isInForce ? (void)unconfirmed_.erase(keyCode) : (void)unconfirmed_.insert(keyCode);
        changed_.emit();
    }
    /// Tells the watch, if there is one; which keys it asked for does not matter here.
    void tell(int keyCode, HoldEdgeKind kind) { tell({keyCode, kind, clock_.now()}); }
    void tell(const HoldEdge& edge);
    /// The keys of the present watch; empty when nobody watches.
    [[nodiscard]] std::vector<int> watched() const { return watch_ ? watch_->keys : std::vector<int>(); }

    /// The keys that are down, for `isHeld`; absent when the road's state cannot be asked.
    std::optional<std::set<int>> held;
    Duration answerDelay = Duration::zero();
    int stateQueries = 0;
    int watchesBegun = 0;

 private:
    struct Watch {
        std::vector<int> keys;
        std::function<void(const HoldEdge&)> observer;
    };

    Clock& clock_;
    QString name_;
    HoldOffer offer_;
    std::set<int> unconfirmed_;
    std::shared_ptr<Watch> watch_;
    Signal<> changed_;
};

} // namespace lorvane
