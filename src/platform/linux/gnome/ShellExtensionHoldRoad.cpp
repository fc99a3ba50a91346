// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/gnome/ShellExtensionHoldRoad.h"

#include "input/HoldKeys.h"
#include "input/Hotkey.h"
#include "input/KeyEvents.h"
#include "platform/linux/gnome/ShellExtension.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QVariantList>

#include <algorithm>
#include <array>

#include <linux/input-event-codes.h>

namespace lorvane {

namespace {

constexpr int answerBound = 150; // milliseconds
/// Older than any event that is still on its way.
constexpr std::uint32_t oldestEvent = 10'000; // milliseconds

struct KeyRow {
    int inputCode;
    int code;
};

// The left twins have codes of their own, below those of the right ones (KeyEvents.h).
constexpr std::array keys{KeyRow{KEY_RIGHTMETA, keyCode::rightCommand},
                          KeyRow{KEY_RIGHTALT, keyCode::rightOption},
                          KeyRow{KEY_RIGHTSHIFT, keyCode::rightShift},
                          KeyRow{KEY_RIGHTCTRL, keyCode::rightControl},
                          KeyRow{KEY_LEFTMETA, 55},
                          KeyRow{KEY_LEFTALT, 58},
                          KeyRow{KEY_LEFTSHIFT, 56},
                          KeyRow{KEY_LEFTCTRL, 59},
                          KeyRow{KEY_ESC, keyCode::escape}};

QVariantList asArray(const std::vector<int>& codes) {
    QList<uint> list;
    for (const int code : codes) {
        list.append(static_cast<uint>(code));
    }
    return {QVariant::fromValue(list)};
}

} // namespace

ShellExtensionHoldRoad::ShellExtensionHoldRoad(QDBusConnection session, Clock& clock, Options options)
    : session_(std::move(session)), clock_(clock), options_(std::move(options)),
      extension_(session_, shellExtension::service, [this] { extensionChanged(); }),
      program_(session_, options_.programName, [this] { programChanged(); }) {
    session_.connect(shellExtension::service, shellExtension::object, shellExtension::interface,
                     QStringLiteral("Key"), this, SLOT(keyMoved(uint, bool, uint, bool)));
}

ShellExtensionHoldRoad::~ShellExtensionHoldRoad() {
    if (watch_) {
        endWatch();
    }
}

void ShellExtensionHoldRoad::extensionChanged() {
    if (extension_.isOwned()) {
        beginWatch();
    } else {
        ++lastWatch_;
        isInForce_ = false;
        for (const int inputCode : std::exchange(down_, {})) {
            tell(keyCodeOf(inputCode), HoldEdgeKind::lost, clock_.now());
        }
    }
    changed_.emit();
}

void ShellExtensionHoldRoad::programChanged() {
    // It may have refused us as long as we did not have the name.
    if (program_.owner() == session_.baseService()) {
        beginWatch();
    }
}

HoldOffer ShellExtensionHoldRoad::offer() const {
    HoldOffer offer;
    if (!extension_.isOwned()) {
        offer.obstacle = QStringLiteral("our extension of the GNOME Shell is not running");
        return offer;
    }
    for (const Hotkey hotkey : allHotkeys) {
        if (inputCodeOf(codeOf(hotkey))) {
            offer.keys.push_back({codeOf(hotkey), true, ChordSight::told});
        }
    }
    offer.keys.push_back({keyCode::escape, true, ChordSight::told});
    return offer;
}

Handle ShellExtensionHoldRoad::watch(std::vector<int> keyCodes,
                                     std::function<void(const HoldEdge&)> observer) {
    watch_ = std::make_shared<Watch>(Watch{std::move(keyCodes), std::move(observer)});
    beginWatch();
    return Handle([this, weak = std::weak_ptr(watch_)] {
        const auto watch = weak.lock();
        if (watch && watch == watch_) {
            watch_.reset();
            endWatch();
        }
    });
}

void ShellExtensionHoldRoad::beginWatch() {
    if (!watch_ || !extension_.isOwned()) {
        return;
    }
    std::vector<int> inputCodes;
    std::vector<int> kept;
    for (const int code : watch_->keyCodes) {
        if (const auto inputCode = inputCodeOf(code)) {
            inputCodes.push_back(*inputCode);
            // It would open a context menu under the user.
            if (code == keyCode::fn) {
                kept.push_back(*inputCode);
            }
        }
    }
    const std::uint64_t watch = ++lastWatch_;
    auto* const answer =
        new QDBusPendingCallWatcher(send(QStringLiteral("Watch"), asArray(inputCodes) + asArray(kept)), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, watch] {
        answer->deleteLater();
        if (watch == lastWatch_) {
            setInForce(!answer->isError());
        }
    });
}

void ShellExtensionHoldRoad::setInForce(bool isInForce) {
    if (isInForce != std::exchange(isInForce_, isInForce)) {
        changed_.emit();
    }
}

void ShellExtensionHoldRoad::endWatch() {
    down_.clear();
    ++lastWatch_;
    isInForce_ = false;
    if (extension_.isOwned()) {
        send(QStringLiteral("Unwatch"), {});
    }
}

QDBusPendingCall ShellExtensionHoldRoad::send(const QString& method, const QVariantList& arguments) {
    return session_.asyncCall(shellExtension::call(method, arguments));
}

QCoro::Task<std::optional<bool>> ShellExtensionHoldRoad::isHeld(int keyCode, TaskScope scope) {
    const auto inputCode = inputCodeOf(keyCode);
    if (!inputCode || !extension_.isOwned() || !watch_) {
        co_return std::nullopt;
    }
    const QDBusMessage call = shellExtension::call(QStringLiteral("IsDown"), {static_cast<uint>(*inputCode)});
    const Completion<std::optional<bool>> answer;
    auto* const watcher = new QDBusPendingCallWatcher(session_.asyncCall(call, answerBound), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, answer] {
        watcher->deleteLater();
        const QDBusPendingReply<bool> reply = *watcher;
        answer.complete(reply.isError() ? std::nullopt : std::optional(reply.value()));
    });
    const std::optional<bool> held = co_await answer.wait(scope);
    co_return held;
}

void ShellExtensionHoldRoad::keyMoved(uint key, bool isDown, uint time, bool isVirtual) {
    if (!watch_ || (isVirtual && options_.isPosting())) {
        return;
    }
    const int inputCode = static_cast<int>(key);
    if (isDown && inputCode != 0) {
        down_.insert(inputCode);
    } else {
        down_.erase(inputCode);
    }
    tell(keyCodeOf(inputCode), isDown ? HoldEdgeKind::down : HoldEdgeKind::up, instantOf(time));
}

void ShellExtensionHoldRoad::tell(int keyCode, HoldEdgeKind kind, Instant time) {
    if (const auto watch = watch_) {
        watch->observer({keyCode, kind, time});
    }
}

std::vector<int> ShellExtensionHoldRoad::heldModifiers() const {
    std::vector<int> held;
    std::copy_if(down_.begin(), down_.end(), std::back_inserter(held),
                 [this](int inputCode) { return modifierMaskOf(keyCodeOf(inputCode)) != 0; });
    return held;
}

std::uint32_t ShellExtensionHoldRoad::modifierFlags() const {
    std::uint32_t flags = 0;
    for (const int inputCode : down_) {
        flags |= modifierMaskOf(keyCodeOf(inputCode));
    }
    return flags;
}

std::optional<int> ShellExtensionHoldRoad::inputCodeOf(int code) const {
    if (code == keyCode::fn) {
        return options_.extraKey();
    }
    const auto* const row =
        std::find_if(keys.begin(), keys.end(), [code](const KeyRow& each) { return each.code == code; });
    return row == keys.end() ? std::nullopt : std::optional(row->inputCode);
}

int ShellExtensionHoldRoad::keyCodeOf(int inputCode) const {
    const auto* const row = std::find_if(
        keys.begin(), keys.end(), [inputCode](const KeyRow& each) { return each.inputCode == inputCode; });
    if (row != keys.end()) {
        return row->code;
    }
    return options_.extraKey() == inputCode ? keyCode::fn : firstOtherKeyCode + inputCode;
}

// The Shell counts milliseconds of the clock that ours counts too, in 32 bits.
Instant ShellExtensionHoldRoad::instantOf(uint time) const {
    const Instant now = clock_.now();
    const auto here = std::chrono::floor<std::chrono::milliseconds>(now.time_since_epoch()).count();
    const auto age = static_cast<std::uint32_t>(static_cast<std::uint64_t>(here)) - time;
    return age > oldestEvent ? now : now - std::chrono::milliseconds(age);
}

} // namespace lorvane
