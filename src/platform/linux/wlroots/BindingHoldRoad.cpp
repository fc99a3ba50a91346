// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wlroots/BindingHoldRoad.h"

#include "base/PreferenceCatalogue.h"
#include "input/HoldKeys.h"
#include "input/KeyEvents.h"

#include <QJsonArray>

#include <algorithm>
#include <utility>

namespace lorvane {

namespace {

using Edge = KeyBinding::Edge;

KeyBindings bothEdges(int key) {
    KeyBindings bindings = bindingsWithAnyModifiers(Edge::down, key);
    bindings.merge(bindingsWithAnyModifiers(Edge::up, key));
    return bindings;
}

QStringList removalOf(const KeyBindings& bindings) {
    QStringList commands;
    for (const KeyBinding& binding : bindings) {
        commands.append(binding.removeCommand());
    }
    return commands;
}

bool isSuccess(const QJsonValue& result) { return result.toObject()[QLatin1String("success")].toBool(); }
bool isUnknown(const QJsonValue& result) { return result.toObject()[QLatin1String("parse_error")].toBool(); }

} // namespace

BindingHoldRoad::BindingHoldRoad(const Foundation& foundation, CompositorSocket& socket)
    : clock_(foundation.clock), preferences_(foundation.preferences), log_(foundation.log), socket_(socket),
      table_(socket), places_(holdKeyPlaces(preferences_.get(preference::extraKey))),
      obstacle_(QStringLiteral("the compositor has no command socket")),
      repeats_(clock_, socket, [this](bool hadRepeats) { repeatsEnded(hadRepeats); }) {
    subscriptions_.push_back(socket.onConnected([this] { connected(); }));
    subscriptions_.push_back(socket.onLost([this] { lost(); }));
    subscriptions_.push_back(socket.onEvent([this](const CompositorSocket::Event& event) { handle(event); }));
    subscriptions_.push_back(preferences_.subscribe(preference::extraKey, [this] {
        places_ = holdKeyPlaces(preferences_.get(preference::extraKey));
        changed_.emit();
    }));
    if (socket.isConnected()) {
        connected();
    }
}

BindingHoldRoad::~BindingHoldRoad() {
    const bool mayBeDown = held_ || mayBeArmed_;
    endWatch();
    if (!mayBeDown) {
        table_.leaveOtherModes();
    }
    socket_.forgetReplies();
    socket_.settle();
}

HoldOffer BindingHoldRoad::offer() const {
    HoldOffer offer{{}, obstacle_};
    if (state_ != State::there) {
        return offer;
    }
    for (const HoldKeyPlace& place : places_) {
        if (place.keyCode != keyCode::escape && user_.keys.contains(place.key)) {
            offer.obstacle = QStringLiteral("the compositor's configuration has a binding on a hold key");
            continue;
        }
        const bool isBlind = place.chords.empty() && place.keyCode != keyCode::escape;
        offer.keys.push_back({place.keyCode, true, isBlind ? ChordSight::losesRelease : ChordSight::told});
    }
    return offer;
}

Handle BindingHoldRoad::watch(std::vector<int> keyCodes, std::function<void(const HoldEdge&)> observer) {
    watched_ = std::set<int>(keyCodes.begin(), keyCodes.end());
    observer_ = std::move(observer);
    const std::uint64_t id = ++watchId_;
    bindWatched();
    return Handle([this, id, alive = std::weak_ptr(alive_)] {
        if (alive.lock() && watchId_ == id) {
            endWatch();
        }
    });
}

QCoro::Task<std::optional<bool>> BindingHoldRoad::isHeld(int /*keyCode*/, TaskScope /*scope*/) {
    co_return std::nullopt;
}

std::uint32_t BindingHoldRoad::heldFlags() const { return held_ ? modifierMaskOf(held_->keyCode) : 0; }

void BindingHoldRoad::connected() {
    state_ = State::asking;
    user_ = {};
    table_.abandon();
    socket_.request(ipcType::subscribe, R"(["binding","mode","workspace"])");
    socket_.request(ipcType::getBindingState, {}, [this](const QJsonDocument& answer) {
        const QString mode = answer.object()[QLatin1String("name")].toString();
        table_.modeEntered(mode.isEmpty() ? QStringLiteral("default") : mode);
    });
    socket_.request(ipcType::getConfig, {}, [this](const QJsonDocument& answer) {
        readConfiguration(answer);
        takeAwayLeftovers();
    });
}

void BindingHoldRoad::readConfiguration(const QJsonDocument& answer) {
    user_ = UserBindings::read(answer.object()[QLatin1String("config")].toString());
    repeats_.setDelay(std::chrono::milliseconds(user_.repeatDelay));
}

void BindingHoldRoad::takeAwayLeftovers() {
    KeyBindings bindings;
    for (const HoldKeyPlace& place : places_) {
        bindings.merge(bothEdges(place.key));
    }
    socket_.run(removalOf(bindings), [this](const QJsonDocument& answer) { leftoversGone(answer); });
}

void BindingHoldRoad::leftoversGone(const QJsonDocument& answer) {
    const QJsonArray results = answer.array();
    if (state_ != State::asking) {
        return;
    }
    if (results.isEmpty() || std::all_of(results.begin(), results.end(), isUnknown)) {
        become(State::refused,
               QStringLiteral("the compositor takes no bindings at run time: ") + errorIn(answer));
        return;
    }
    become(State::there, {});
    bindWatched();
    // A run that was cut short in the middle of a hold has left those of other keys too.
    hasLeftovers_ = std::any_of(results.begin(), results.end(), isSuccess);
}

void BindingHoldRoad::takeAwayLeftoverChords() {
    std::set<int> ours;
    for (const HoldKeyPlace& place : places_) {
        ours.insert(place.key);
    }
    for (const HoldKeyPlace& place : places_) {
        socket_.run(removalOf(otherKeys(place.chords, ours)));
    }
}

void BindingHoldRoad::lost() {
    loseHeld();
    mayBeArmed_ = false;
    inForce_.clear();
    table_.abandon();
    become(State::away, QStringLiteral("the compositor's command socket is gone"));
}

void BindingHoldRoad::become(State state, const QString& obstacle) {
    state_ = state;
    obstacle_ = obstacle;
    if (!obstacle.isEmpty()) {
        log_.diagLog(QStringLiteral("[tirra-wayland] no hold key by compositor bindings: ") + obstacle);
    }
    changed_.emit();
}

KeyBindings BindingHoldRoad::bindingsOfWatched() const {
    KeyBindings bindings;
    for (const HoldKeyPlace& place : places_) {
        if (place.keyCode == keyCode::escape) {
            // It has to reach its application, as always.
            bindings.merge(escapeStays_ ? bindingsWithAnyModifiers(Edge::up, place.key) : KeyBindings());
        } else if (isWatched(place.keyCode)) {
            bindings.merge(bothEdges(place.key));
        }
    }
    return bindings;
}

void BindingHoldRoad::bindWatched() {
    if (state_ != State::there) {
        return;
    }
    // Escape may be down at this very moment, so its bindings stay until the watch ends.
    escapeStays_ = !watched_.empty() && (escapeStays_ || isWatched(keyCode::escape));
    KeyBindings bindings = bindingsOfWatched();
    if (held_ || mayBeArmed_) {
        const KeyBindings& present = table_.wanted();
        bindings.insert(present.begin(), present.end());
    }
    table_.want(std::move(bindings));
    confirmWhenAnswered();
}

// Answers come in order, so this one says that the bindings before it are set.
void BindingHoldRoad::confirmWhenAnswered() {
    std::erase_if(inForce_, [this](int code) { return !isWatched(code); });
    if (std::includes(inForce_.begin(), inForce_.end(), watched_.begin(), watched_.end())) {
        return;
    }
    socket_.request(ipcType::getVersion, {}, [this, asked = watched_](const QJsonDocument&) {
        if (state_ == State::there && asked == watched_) {
            inForce_ = asked;
            changed_.emit();
        }
    });
}

void BindingHoldRoad::endWatch() {
    watched_.clear();
    observer_ = nullptr;
    bindWatched();
}

const HoldKeyPlace* BindingHoldRoad::placeOf(int key) const {
    const auto found = std::find_if(places_.begin(), places_.end(),
                                    [key](const HoldKeyPlace& place) { return place.key == key; });
    return found == places_.end() ? nullptr : &*found;
}

void BindingHoldRoad::handle(const CompositorSocket::Event& event) {
    const QString change = event.body[QLatin1String("change")].toString();
    if (event.type == ipcType::bindingEvent) {
        handleBinding(event.body[QLatin1String("binding")].toObject());
    } else if (event.type == ipcType::modeEvent) {
        table_.modeEntered(change);
    } else if (event.type == ipcType::workspaceEvent && change == QLatin1String("reload")) {
        loseHeld();
        mayBeArmed_ = false;
        table_.forgotten();
        socket_.request(ipcType::getConfig, {}, [this](const QJsonDocument& answer) {
            readConfiguration(answer);
            changed_.emit();
        });
    }
}

void BindingHoldRoad::handleBinding(const QJsonObject& binding) {
    const auto ours = KeyBinding::fromCommand(binding[QLatin1String("command")].toString());
    if (!ours) {
        handleForeign(binding);
        return;
    }
    const HoldKeyPlace* const place = placeOf(ours->key);
    if (place == nullptr || place->keyCode == keyCode::escape) {
        otherKey(ours->key);
    } else if (ours->edge == Edge::up) {
        released(*place);
    } else if (isWatched(place->keyCode)) {
        pressed(*place, ours->modifiers);
    }
}

/// The user's own bindings are told as well.
void BindingHoldRoad::handleForeign(const QJsonObject& binding) {
    int key = binding[QLatin1String("input_code")].toInt();
    const QJsonArray symbols = binding[QLatin1String("symbols")].toArray();
    if (key == 0 && symbols.size() == 1) {
        key = placeOfSymbol(symbols.first().toString());
    }
    const HoldKeyPlace* const place = placeOf(key);
    const bool isAlone = binding[QLatin1String("event_state_mask")].toArray().isEmpty();
    if (place != nullptr && isAlone && place->keyCode != keyCode::escape) {
        if (user_.keys.insert(key).second) {
            changed_.emit();
        }
    } else if (held_) {
        otherKey(key);
    }
}

void BindingHoldRoad::pressed(const HoldKeyPlace& place, std::uint8_t modifiers) {
    if (held_ && held_->key == place.key) {
        if (repeats_.canBeRepeat()) {
            repeats_.repeated();
            return;
        }
        repeatsEnded(false);
    }
    loseHeld();
    held_ = place;
    heldSince_ = clock_.now();
    repeats_.pressed();
    lookForOthers(place, modifiers);
    tell(place.keyCode, HoldEdgeKind::down);
}

void BindingHoldRoad::lookForOthers(const HoldKeyPlace& place, std::uint8_t modifiers) {
    std::set<std::uint8_t> chords(place.chords.begin(), place.chords.end());
    for (const std::uint8_t mask : place.chords) {
        chords.insert(mask | modifiers);
    }
    for (const std::uint8_t reloading : user_.reloading) {
        chords.erase(reloading);
    }
    std::set<int> watchedKeys;
    for (const HoldKeyPlace& other : places_) {
        if (isWatched(other.keyCode)) {
            watchedKeys.insert(other.key);
        }
    }
    KeyBindings bindings = table_.wanted();
    bindings.merge(otherKeys({chords.begin(), chords.end()}, watchedKeys));
    table_.want(std::move(bindings));
}

/// Without a single repeat the other key came before the first one was due.
void BindingHoldRoad::repeatsEnded(bool hadRepeats) {
    if (held_ && !hadRepeats && observer_) {
        const auto observer = observer_;
        observer(
            {firstOtherKeyCode, HoldEdgeKind::down, std::min(clock_.now(), heldSince_ + repeats_.delay())});
    }
    loseHeld();
}

/// No other key went down since the press, and this one is up: now nothing of ours is in use.
void BindingHoldRoad::released(const HoldKeyPlace& place) {
    if (held_ && held_->key != place.key) {
        return;
    }
    held_.reset();
    repeats_.stop();
    mayBeArmed_ = false;
    bindWatched();
    if (std::exchange(hasLeftovers_, false)) {
        takeAwayLeftoverChords();
    }
    if (isWatched(place.keyCode)) {
        tell(place.keyCode, HoldEdgeKind::up);
    }
}

void BindingHoldRoad::otherKey(int key) {
    const int code = keyCodeOfPlace(key);
    if (held_ || isWatched(code)) {
        tell(code, HoldEdgeKind::down);
        tell(code, HoldEdgeKind::up);
    }
    loseHeld();
}

void BindingHoldRoad::loseHeld() {
    repeats_.stop();
    if (const auto lost = std::exchange(held_, std::nullopt)) {
        mayBeArmed_ = true;
        tell(lost->keyCode, HoldEdgeKind::lost);
    }
}

void BindingHoldRoad::tell(int keyCode, HoldEdgeKind kind) {
    if (observer_) {
        const auto observer = observer_;
        observer({keyCode, kind, clock_.now()});
    }
}

} // namespace lorvane
