// SPDX-License-Identifier: GPL-3.0-or-later
#include "input/HoldRoadKeyEvents.h"

#include "base/PreferenceCatalogue.h"
#include "input/HoldKeys.h"

#include <QStringList>

#include <algorithm>

namespace lorvane {

HoldRoadKeyEvents::HoldRoadKeyEvents(const Foundation& foundation, std::vector<HoldRoad*> roads,
                                     std::function<bool()> programHasFocus)
    : clock_(foundation.clock), preferences_(foundation.preferences), log_(foundation.log),
      roads_(std::move(roads)), programHasFocus_(std::move(programHasFocus)) {
    for (HoldRoad* const road : roads_) {
        states_[road].offer = road->offer();
        states_[road].change = road->onChange([this, road] { roadChanged(*road); });
    }
    for (const auto* const key : {&preference::hotkey, &preference::toggleHotkey}) {
        subscriptions_.push_back(preferences_.subscribe(*key, [this] { followSoon(); }));
    }
}

Handle HoldRoadKeyEvents::addGlobalMonitor(KeyEventKind kind, std::function<void(const KeyEvent&)> observer) {
    return monitors_.addGlobal(kind, std::move(observer));
}

Handle HoldRoadKeyEvents::addLocalMonitor(KeyEventKind kind, std::function<bool(const KeyEvent&)> observer) {
    return monitors_.addLocal(kind, std::move(observer));
}

const HoldRoad* HoldRoadKeyEvents::holdRoad() const {
    const auto choice = holdChoice();
    return choice ? choice->road : nullptr;
}

const HoldRoad* HoldRoadKeyEvents::handsFreeRoad() const {
    const auto choice = handsFreeChoice();
    return choice ? choice->road : nullptr;
}

std::optional<HoldRoadKeyEvents::Choice> HoldRoadKeyEvents::choose(int keyCode, bool needsTaps) const {
    for (HoldRoad* const road : roads_) {
        const HoldOffer offer = road->offer();
        const auto found = std::find_if(offer.keys.begin(), offer.keys.end(), [&](const HoldKeyOffer& key) {
            return key.keyCode == keyCode && (!needsTaps || HoldPress::tellsTaps(key.chords));
        });
        if (found != offer.keys.end() && !states_.at(road).blindTo.contains(keyCode)) {
            return Choice{road, *found};
        }
    }
    return std::nullopt;
}

std::optional<HoldRoadKeyEvents::Choice> HoldRoadKeyEvents::holdChoice() const {
    const auto hotkey = hotkeyFromRawName(preferences_.get(preference::hotkey));
    return choose(codeOf(hotkey.value_or(Hotkey::rightCommand)), false);
}

// A road where every Alt+Tab looks like a tap of Alt would start takes that nobody asked for.
std::optional<HoldRoadKeyEvents::Choice> HoldRoadKeyEvents::handsFreeChoice() const {
    const auto hotkey = hotkeyFromRawName(preferences_.get(preference::toggleHotkey));
    return hotkey ? choose(codeOf(*hotkey), true) : std::nullopt;
}

std::vector<HoldRoadKeyEvents::Choice> HoldRoadKeyEvents::wanted() const {
    std::vector<Choice> choices;
    if (monitors_.size() == 0) {
        return choices;
    }
    const auto escape =
        monitors_.hasLocal(KeyEventKind::keyDown) ? choose(keyCode::escape, false) : std::nullopt;
    for (const auto& choice : {holdChoice(), handsFreeChoice(), escape}) {
        if (choice) {
            choices.push_back(*choice);
        }
    }
    return choices;
}

// Later, because monitors come and go while one of them, or a road, is in the middle of telling.
void HoldRoadKeyEvents::followSoon() {
    followLater_ = clock_.after(Duration::zero(), [this] { follow(); });
}

void HoldRoadKeyEvents::roadChanged(HoldRoad& road) {
    RoadState& state = states_.at(&road);
    if (HoldOffer offer = road.offer(); offer != state.offer) {
        state.offer = std::move(offer);
        state.blindTo.clear();
    }
    followSoon();
}

void HoldRoadKeyEvents::follow() {
    const std::vector<Choice> choices = wanted();
    dropAllBut(choices);
    std::map<HoldRoad*, std::vector<int>> keys;
    for (const Choice& choice : choices) {
        const int code = choice.key.keyCode;
        if (!watched_.contains(code)) {
            std::unique_ptr<HoldPress> press;
            if (code != keyCode::escape) {
                press = std::make_unique<HoldPress>(
                    clock_, *choice.road, choice.key,
                    HoldPressListener{
                        [this, code](bool isDown, Instant time) { moved(code, isDown, time); },
                        [this](Instant time) { deliver(KeyEventKind::keyDown, firstOtherKeyCode, time); }});
            }
            watched_.emplace(code, Watched{choice, std::move(press), false});
        }
        keys[choice.road].push_back(code);
    }
    for (HoldRoad* const road : roads_) {
        watch(*road, std::move(keys[road]));
    }
    announce();
    roadsChanged_.emit();
}

// Whoever reads it may count on the key.
void HoldRoadKeyEvents::announce() {
    for (auto& [code, watched] : watched_) {
        const HoldRoad& road = *watched.choice.road;
        const bool isInForce = road.isInForce(code);
        if (watched.press && isInForce && !watched.isAnnounced) {
            log_.diagLog(QStringLiteral("[tirra-keys] key %1 comes by %2").arg(code).arg(road.name()));
        }
        watched.isAnnounced = isInForce;
    }
}

void HoldRoadKeyEvents::dropAllBut(const std::vector<Choice>& choices) {
    for (auto it = watched_.begin(); it != watched_.end();) {
        if (std::find(choices.begin(), choices.end(), it->second.choice) != choices.end()) {
            ++it;
            continue;
        }
        const Watched dropped = std::move(it->second);
        if (dropped.press) {
            dropped.press->end();
        }
        it = watched_.erase(it);
    }
}

void HoldRoadKeyEvents::watch(HoldRoad& road, std::vector<int> keys) {
    RoadState& state = states_.at(&road);
    if (state.keys == keys) {
        return;
    }
    state.keys = std::move(keys);
    if (state.keys.empty()) {
        forgetOthersOf(road);
        state.watch.reset();
    } else {
        state.watch = road.watch(state.keys, [this, &road](const HoldEdge& edge) { handleEdge(road, edge); });
    }
}

void HoldRoadKeyEvents::handleEdge(HoldRoad& road, const HoldEdge& edge) {
    const auto found = watched_.find(edge.keyCode);
    if (found == watched_.end()) {
        return handleOther(road, edge);
    }
    if (found->second.choice.road != &road) {
        return;
    }
    HoldPress* const press = found->second.press.get();
    if (press == nullptr) {
        return handleOther(road, edge);
    }
    press->handle(edge.kind, edge.time);
    if (press->isBlindToHolding()) {
        states_.at(&road).blindTo.insert(edge.keyCode);
        log_.diagLog(
            QStringLiteral("[tirra-keys] %1 does not see key %2 held").arg(road.name()).arg(edge.keyCode));
        followSoon();
    }
}

void HoldRoadKeyEvents::handleOther(HoldRoad& road, const HoldEdge& edge) {
    const std::uint32_t mask = modifierMaskOf(edge.keyCode);
    if (mask == 0) {
        if (edge.kind == HoldEdgeKind::down) {
            noteOtherKey(edge.time);
            deliver(KeyEventKind::keyDown, edge.keyCode, edge.time);
        }
        return;
    }
    const bool moved = edge.kind == HoldEdgeKind::down ? others_.emplace(edge.keyCode, &road).second
                                                       : others_.erase(edge.keyCode) > 0;
    if (!moved) {
        return;
    }
    deliver(KeyEventKind::flagsChanged, edge.keyCode, edge.time);
    if (edge.kind != HoldEdgeKind::down) {
        closeBits(edge.time);
    }
}

void HoldRoadKeyEvents::noteOtherKey(Instant time) {
    for (const auto& [code, watched] : watched_) {
        if (watched.press) {
            watched.press->noteOtherKey(time);
        }
    }
}

// The bit is common to both twins, so the release of the key itself may still have shown it.
void HoldRoadKeyEvents::closeBits(Instant time) {
    const std::set<int> open = openBits_;
    for (const int code : open) {
        if ((flags() & modifierMaskOf(code)) == 0 && openBits_.erase(code) > 0) {
            deliver(KeyEventKind::flagsChanged, code, time);
        }
    }
}

void HoldRoadKeyEvents::moved(int keyCode, bool isDown, Instant time) {
    deliver(KeyEventKind::flagsChanged, keyCode, time);
    if (!isDown && (flags() & modifierMaskOf(keyCode)) != 0) {
        openBits_.insert(keyCode);
    }
}

void HoldRoadKeyEvents::deliver(KeyEventKind kind, int keyCode, Instant time) {
    monitors_.deliver({kind, keyCode, flags(), time}, programHasFocus_());
}

void HoldRoadKeyEvents::forgetOthersOf(HoldRoad& road) {
    if (std::erase_if(others_, [&road](const auto& other) { return other.second == &road; }) > 0) {
        closeBits(clock_.now());
    }
}

std::uint32_t HoldRoadKeyEvents::flags() const {
    std::uint32_t all = 0;
    for (const auto& [code, watched] : watched_) {
        if (watched.press && watched.press->isDown()) {
            all |= modifierMaskOf(code);
        }
    }
    for (const auto& [code, road] : others_) {
        all |= modifierMaskOf(code);
    }
    return all;
}

} // namespace lorvane
