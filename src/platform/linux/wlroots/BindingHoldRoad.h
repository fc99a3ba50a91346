// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Foundation.h"
#include "base/Signal.h"
#include "input/HoldRoad.h"
#include "platform/linux/wlroots/BindingTable.h"
#include "platform/linux/wlroots/CompositorSocket.h"
#include "platform/linux/wlroots/HoldKeyPlaces.h"
#include "platform/linux/wlroots/RepeatWatch.h"
#include "platform/linux/wlroots/UserBindings.h"

#include <memory>
#include <set>

namespace lorvane {

/// Hold keys by bindings that are set in the running compositor, sway or one with the same commands. The
/// user's configuration stays as it is, what is left after a crash does nothing and is taken away by the next
/// run. Times are those of arrival. Main thread.
///
/// sway runs no release binding when another key went down in between. So while a key is held, bindings for
/// the release of the other keys stand beside it: the first of them says that there was a chord, and from
/// then on the held key counts as lost. A chord that was quicker than those bindings shows by the repeats of
/// the held key, which end with it.
class BindingHoldRoad final : public HoldRoad {
 public:
    BindingHoldRoad(const Foundation& foundation, CompositorSocket& socket);
    BindingHoldRoad(const BindingHoldRoad&) = delete;
    BindingHoldRoad& operator=(const BindingHoldRoad&) = delete;
    ~BindingHoldRoad() override;

    [[nodiscard]] QString name() const override { return QStringLiteral("compositor bindings"); }
    [[nodiscard]] HoldOffer offer() const override;
    [[nodiscard]] Handle watch(std::vector<int> keyCodes,
                               std::function<void(const HoldEdge&)> observer) override;
    /// The compositor has set its bindings.
    [[nodiscard]] bool isInForce(int keyCode) const override { return inForce_.contains(keyCode); }
    /// Nobody can be asked.
    QCoro::Task<std::optional<bool>> isHeld(int keyCode, TaskScope scope) override;
    /// The modifier bit of the key that is held; 0 when none is.
    [[nodiscard]] std::uint32_t heldFlags() const;
    [[nodiscard]] Handle onChange(std::function<void()> changed) override {
        return changed_.subscribe(std::move(changed));
    }

 private:
    enum class State { away, asking, there, refused };

    void connected();
    void takeAwayLeftovers();
    void leftoversGone(const QJsonDocument& answer);
    void takeAwayLeftoverChords();
    void lost();
    void become(State state, const QString& obstacle);
    void handle(const CompositorSocket::Event& event);
    void handleBinding(const QJsonObject& binding);
    void handleForeign(const QJsonObject& binding);
    void pressed(const HoldKeyPlace& place, std::uint8_t modifiers);
    void released(const HoldKeyPlace& place);
    void otherKey(int key);
    void lookForOthers(const HoldKeyPlace& place, std::uint8_t modifiers);
    void repeatsEnded(bool hadRepeats);
    void readConfiguration(const QJsonDocument& answer);
    void loseHeld();
    void tell(int keyCode, HoldEdgeKind kind);
    /// The bindings of what is watched.
    void bindWatched();
    void confirmWhenAnswered();
    void endWatch();
    [[nodiscard]] KeyBindings bindingsOfWatched() const;
    [[nodiscard]] const HoldKeyPlace* placeOf(int key) const;
    [[nodiscard]] bool isWatched(int keyCode) const { return watched_.contains(keyCode); }

    Clock& clock_;
    Preferences& preferences_;
    DiagnosticLog& log_;
    CompositorSocket& socket_;
    BindingTable table_;
    std::vector<HoldKeyPlace> places_;
    UserBindings user_;
    State state_ = State::away;
    QString obstacle_;
    std::set<int> watched_;
    std::set<int> inForce_;
    std::function<void(const HoldEdge&)> observer_;
    std::uint64_t watchId_ = 0;
    /// A handle may outlive the road.
    std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
    /// The key that is down.
    std::optional<HoldKeyPlace> held_;
    Instant heldSince_;
    RepeatWatch repeats_;
    /// Bindings for other keys stand, and one of their keys may be down.
    bool mayBeArmed_ = false;
    bool escapeStays_ = false;
    /// Of an earlier run, for other keys: they do nothing, and go at a moment when no key is down.
    bool hasLeftovers_ = false;
    Signal<> changed_;
    std::vector<Handle> subscriptions_;
};

} // namespace lorvane
