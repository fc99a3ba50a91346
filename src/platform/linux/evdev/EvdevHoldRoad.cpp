// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/evdev/EvdevHoldRoad.h"

#include "base/PreferenceCatalogue.h"
#include "input/HoldKeys.h"
#include "input/KeyEvents.h"

#include <linux/input.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace lorvane {

namespace {

/// A time from further back is no time of a key that was just read.
constexpr Duration oldest = std::chrono::minutes(1);
constexpr int readsInOneTurn = 64;

constexpr std::array namedKeyCodes{
    keyCode::rightCommand, keyCode::rightOption, keyCode::rightShift, keyCode::rightControl, keyCode::fn,
    keyCode::leftCommand,  keyCode::leftOption,  keyCode::leftShift,  keyCode::leftControl,  keyCode::escape,
};

} // namespace

void EvdevHoldRoad::EndLater::operator()(QSocketNotifier* notifier) const {
    notifier->setEnabled(false);
    notifier->deleteLater();
}

EvdevHoldRoad::EvdevHoldRoad(const Foundation& foundation, KeyDevices& devices)
    : clock_(foundation.clock), preferences_(foundation.preferences), log_(foundation.log),
      devices_(devices) {
    subscriptions_.push_back(devices_.onChange([this] { look(); }));
    subscriptions_.push_back(preferences_.subscribe(readKeyDevices, [this] { look(); }));
    subscriptions_.push_back(preferences_.subscribe(preference::extraKey, [this] { look(); }));
    look();
}

void EvdevHoldRoad::look() {
    const HoldOffer offer = lookedAt();
    const bool changed = offer != offer_;
    offer_ = offer;
    if (watch_ && !offer_.keys.empty()) {
        openDevices();
    } else {
        open_.clear();
    }
    if (changed) {
        changed_.emit();
    }
}

HoldOffer EvdevHoldRoad::lookedAt() const {
    if (!preferences_.get(readKeyDevices)) {
        return {{}, QStringLiteral("reading key devices is switched off")};
    }
    switch (devices_.access()) {
    case KeyDevices::Access::refused:
        return {{}, QStringLiteral("this user may not read key devices (group input)")};
    case KeyDevices::Access::none:
        return {{}, QStringLiteral("there is no keyboard device")};
    case KeyDevices::Access::granted:
        break;
    }
    HoldOffer offer;
    for (const int code : {keyCode::rightCommand, keyCode::rightOption, keyCode::rightShift,
                           keyCode::rightControl, keyCode::fn, keyCode::escape}) {
        if (evdevCodeOf(code, extraKey())) {
            offer.keys.push_back({code, true, ChordSight::told});
        }
    }
    return offer;
}

Handle EvdevHoldRoad::watch(std::vector<int> /*keyCodes*/, std::function<void(const HoldEdge&)> observer) {
    watch_ = std::make_shared<Watch>(Watch{std::move(observer)});
    if (!offer_.keys.empty()) {
        openDevices();
    }
    return Handle([this, weak = std::weak_ptr(watch_)] {
        const auto watch = weak.lock();
        if (watch && watch == watch_) {
            watch_.reset();
            open_.clear();
        }
    });
}

void EvdevHoldRoad::openDevices() {
    const std::vector<QString> names = devices_.names();
    const auto opened = open_;
    for (const auto& [name, open] : opened) {
        if (std::find(names.begin(), names.end(), name) == names.end()) {
            closeDevice(name);
        }
    }
    for (const QString& name : names) {
        if (!open_.contains(name)) {
            openDevice(name);
        }
    }
}

void EvdevHoldRoad::openDevice(const QString& name) {
    auto device = devices_.open(name);
    if (!device) {
        return;
    }
    const auto open = std::make_shared<Open>();
    open->device = std::move(device);
    open->down = open->device->keysDown().value_or(EvdevKeys()) & namedKeys();
    open->readable.reset(new QSocketNotifier(open->device->descriptor(), QSocketNotifier::Read));
    QObject::connect(open->readable.get(), &QSocketNotifier::activated, open->readable.get(),
                     [this, name] { readDevice(name); });
    open_.emplace(name, open);
    log_.diagLog(QStringLiteral("[tirra-keys] reading keys of %1").arg(name));
}

void EvdevHoldRoad::readDevice(const QString& name) {
    const auto found = open_.find(name);
    if (found == open_.end()) {
        return;
    }
    const auto open = found->second; // what is told may close it
    std::array<char, 64 * sizeof(input_event)> buffer;
    for (int i = 0; i < readsInOneTurn; ++i) {
        const auto count = read(open->device->descriptor(), buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0 && errno == EAGAIN) {
            return;
        }
        if (count <= 0) {
            return closeDevice(name);
        }
        for (const auto& item : open->stream.take({buffer.data(), count})) {
            take(*open, item);
            if (const auto now = open_.find(name); now == open_.end() || now->second != open) {
                return;
            }
        }
    }
}

void EvdevHoldRoad::closeDevice(const QString& name) {
    const auto found = open_.extract(name);
    if (!found) {
        return;
    }
    const auto gone = found.mapped();
    log_.diagLog(QStringLiteral("[tirra-keys] %1 has gone").arg(name));
    loseKeys(*gone);
    // Another may have its name by then.
    lookAgain_ = clock_.after(std::chrono::seconds(1), [this] { look(); });
}

void EvdevHoldRoad::loseKeys(Open& open) {
    const EvdevKeys were = std::exchange(open.down, {});
    for (std::size_t key = 0; key < were.size(); ++key) {
        if (were[key] && !isDownAnywhere(static_cast<EvdevCode>(key))) {
            tell(static_cast<EvdevCode>(key), HoldEdgeKind::lost, clock_.now());
        }
    }
}

void EvdevHoldRoad::take(Open& open, const KeyEventStream::Item& item) {
    if (item.kind == KeyEventStream::Item::Kind::dropped) {
        return resynchronise(open);
    }
    const Instant now = clock_.now();
    const bool timeIsTrue = open.device->tellsSteadyTime() && item.time <= now && now - item.time < oldest;
    setDown(open, item.key, item.kind == KeyEventStream::Item::Kind::down, timeIsTrue ? item.time : now);
}

void EvdevHoldRoad::setDown(Open& open, EvdevCode key, bool down, Instant time) {
    if (key >= open.down.size() || !namedKeys()[key]) {
        if (down) {
            tell(key, HoldEdgeKind::down, time);
        }
        return;
    }
    const bool wasDown = isDownAnywhere(key);
    open.down[key] = down;
    if (wasDown != isDownAnywhere(key)) {
        tell(key, down ? HoldEdgeKind::down : HoldEdgeKind::up, time);
    }
}

void EvdevHoldRoad::resynchronise(Open& open) {
    const auto state = open.device->keysDown();
    if (!state) {
        return loseKeys(open);
    }
    const EvdevKeys changed = (*state ^ open.down) & namedKeys();
    for (std::size_t key = 0; key < changed.size(); ++key) {
        if (changed[key]) {
            setDown(open, static_cast<EvdevCode>(key), (*state)[key], clock_.now());
        }
    }
}

void EvdevHoldRoad::tell(EvdevCode key, HoldEdgeKind kind, Instant time) {
    const auto code = keyCodeOf(key, extraKey());
    if (const auto watch = watch_; watch && code) {
        watch->observer({*code, kind, time});
    }
}

QCoro::Task<std::optional<bool>> EvdevHoldRoad::isHeld(int keyCode, TaskScope /*scope*/) {
    const auto key = evdevCodeOf(keyCode, extraKey());
    std::optional<bool> held;
    for (const auto& [name, open] : open_) {
        const auto state = key ? open->device->keysDown() : std::nullopt;
        if (state) {
            held = held.value_or(false) || (*state)[*key];
        }
    }
    co_return held;
}

std::uint32_t EvdevHoldRoad::heldModifiers() const {
    std::uint32_t held = 0;
    for (const int code : namedKeyCodes) {
        const auto key = evdevCodeOf(code, extraKey());
        if (key && isDownAnywhere(*key)) {
            held |= modifierMaskOf(code);
        }
    }
    return held & ~modifierFlag::function;
}

bool EvdevHoldRoad::isDownAnywhere(EvdevCode key) const {
    return std::any_of(open_.begin(), open_.end(),
                       [key](const auto& entry) { return entry.second->down[key]; });
}

EvdevKeys EvdevHoldRoad::namedKeys() const {
    EvdevKeys keys;
    for (const int code : namedKeyCodes) {
        if (const auto key = evdevCodeOf(code, extraKey())) {
            keys.set(*key);
        }
    }
    return keys;
}

std::optional<EvdevCode> EvdevHoldRoad::extraKey() const {
    return evdevExtraKey(preferences_.get(preference::extraKey));
}

} // namespace lorvane
