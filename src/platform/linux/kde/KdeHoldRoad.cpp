// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/kde/KdeHoldRoad.h"

#include "base/PreferenceCatalogue.h"
#include "input/HoldKeys.h"
#include "input/KeyEvents.h"

#include <algorithm>

namespace lorvane {

namespace {

QStringList allActions() {
    QStringList names;
    for (const int code : kdeKeyCodes()) {
        names.append(kdeKeyOf(code, QString())->action);
    }
    return names;
}

bool contains(const std::vector<int>& codes, int code) {
    return std::find(codes.begin(), codes.end(), code) != codes.end();
}

} // namespace

KdeHoldRoad::KdeHoldRoad(const QDBusConnection& session, const Foundation& foundation, QString programName,
                         std::function<bool()> areKeysOurs)
    : clock_(foundation.clock), preferences_(foundation.preferences), words_(foundation.words),
      log_(foundation.log), programName_(std::move(programName)), uniqueName_(session.baseService()),
      areKeysOurs_(std::move(areKeysOurs)), shortcuts_(session, foundation.log, allActions()) {
    edges_ = shortcuts_.onEdge([this](const QString& action, bool isDown) { onEdge(action, isDown); });
    service_ = shortcuts_.onChange([this] { onServiceChange(); });
    extraKey_ = preferences_.subscribe(preference::extraKey, [this] {
        follow();
        changed_.emit();
    });
}

std::optional<KdeKey> KdeHoldRoad::keyOf(int keyCode) const {
    return kdeKeyOf(keyCode, preferences_.get(preference::extraKey));
}

HoldOffer KdeHoldRoad::offer() const {
    HoldOffer offer;
    if (!shortcuts_.isThere()) {
        return offer;
    }
    QStringList obstacles;
    for (const int code : kdeKeyCodes()) {
        const auto key = keyOf(code);
        const auto refusal = key ? shortcuts_.refusalOf(key->action) : std::nullopt;
        if (refusal) {
            obstacles.append(words_.text("%1 is a shortcut already: %2.").arg(key->keyName, *refusal));
        } else if (key) {
            offer.keys.push_back(key->offer);
        }
    }
    obstacles.append(words_.text("KDE tells no program of Super alone."));
    offer.obstacle = obstacles.join(QLatin1Char(' '));
    return offer;
}

bool KdeHoldRoad::isInForce(int keyCode) const {
    const auto taken = taken_.find(keyCode);
    return taken != taken_.end() && shortcuts_.isInForce(taken->name);
}

Handle KdeHoldRoad::watch(std::vector<int> keyCodes, std::function<void(const HoldEdge&)> observer) {
    watch_ = std::make_shared<Watch>(Watch{std::move(keyCodes), std::move(observer)});
    follow();
    return Handle([this, weak = std::weak_ptr(watch_)] { endWatch(weak.lock()); });
}

void KdeHoldRoad::endWatch(const std::shared_ptr<Watch>& watch) {
    if (watch && watch == watch_) {
        watch_.reset();
        follow();
    }
}

void KdeHoldRoad::follow() {
    const std::vector<int> wanted = watch_ ? watch_->keyCodes : std::vector<int>();
    for (const int code : kdeKeyCodes()) {
        const auto key = contains(wanted, code) ? keyOf(code) : std::nullopt;
        if (key) {
            takeKey(*key);
        } else if (taken_.contains(code)) {
            shortcuts_.letGo(taken_.take(code).name);
            down_.erase(code);
        }
    }
}

void KdeHoldRoad::takeKey(const KdeKey& key) {
    const int code = key.offer.keyCode;
    const bool isCancel = code == keyCode::escape;
    QList<int> keys = key.qtKeys;
    if (isCancel) {
        for (const int held : watch_->keyCodes) {
            if (escapeWith(held) != keys.front()) {
                keys.append(escapeWith(held));
            }
        }
    }
    if (taken_.contains(code) && taken_.value(code).keys == keys) {
        return;
    }
    if (key.offer.chords == ChordSight::dedicated) {
        stayOnGuard();
    }
    const QString label =
        isCancel ? words_.text("Cancel the dictation") : words_.text("Dictate by %1").arg(key.keyName);
    taken_.insert(code, {key.action, label, keys});
    shortcuts_.take(taken_.value(code));
}

void KdeHoldRoad::stayOnGuard() {
    if (guard_) {
        return;
    }
    guard_ = std::make_unique<ShortcutGuard>(
        ShortcutGuard::Owner{GlobalShortcuts::component, allActions(), programName_, uniqueName_});
    if (!guard_->isOnWatch()) {
        log_.diagLog("[tirra-kde] no shell could be started to let the shortcuts go after a crash");
    }
}

void KdeHoldRoad::onEdge(const QString& action, bool isDown) {
    for (auto taken = taken_.begin(); taken != taken_.end(); ++taken) {
        const int code = taken.key();
        const bool isRepeat = down_.contains(code) == isDown;
        if (taken->name != action || isRepeat || (isDown && areKeysOurs_())) {
            continue;
        }
        if (isDown) {
            down_.insert(code);
        } else {
            down_.erase(code);
        }
        tell({code, isDown ? HoldEdgeKind::down : HoldEdgeKind::up, clock_.now()});
        return;
    }
}

std::uint32_t KdeHoldRoad::heldModifiers() const {
    std::uint32_t held = 0;
    for (const int code : down_) {
        held |= modifierMaskOf(code);
    }
    return held & ~modifierFlag::function;
}

void KdeHoldRoad::onServiceChange() {
    if (!shortcuts_.isThere()) {
        const std::set<int> lost = std::exchange(down_, {});
        for (const int code : lost) {
            tell({code, HoldEdgeKind::lost, clock_.now()});
        }
    }
    changed_.emit();
}

void KdeHoldRoad::tell(const HoldEdge& edge) {
    // The observer may end the watch.
    if (const auto watch = watch_) {
        watch->observer(edge);
    }
}

QCoro::Task<std::optional<bool>> KdeHoldRoad::isHeld(int /*keyCode*/, TaskScope /*scope*/) {
    co_return std::nullopt;
}

} // namespace lorvane
