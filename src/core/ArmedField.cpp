// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/ArmedField.h"

namespace lorvane {

namespace {
constexpr Duration afterRightArrow = std::chrono::microseconds(1500);
constexpr Duration afterDelete = std::chrono::milliseconds(3);
constexpr Duration untilArrowsTook = std::chrono::milliseconds(200);
/// Chromium tells of the text and of the caret one after the other.
constexpr Duration untilConsistent = std::chrono::milliseconds(100);
constexpr Duration lateTextAwaited = std::chrono::milliseconds(400);
/// An application that is busy for a moment, saving for instance, takes what it is sent after that.
constexpr Duration answerAwaited = std::chrono::milliseconds(1500);
constexpr Duration betweenReads = std::chrono::milliseconds(5);
/// In all, and for each key besides.
constexpr Duration untilKeysGoOut = std::chrono::seconds(2);
constexpr Duration untilKeyGoesOut = std::chrono::milliseconds(40);
constexpr qint64 anywhere = -1;
} // namespace

QCoro::Task<std::optional<CaretReading>> ArmedField::state(TypingAttempt typed, TaskScope scope) {
    if (!typed.typingTarget || !typed.typingElement) {
        co_return std::nullopt;
    }
    const TypingField field{*typed.typingTarget, *typed.typingElement};
    const auto read = co_await prober_.typingFieldState(field, scope);
    if (!read) {
        co_return std::nullopt;
    }
    co_return CaretReading{read->length, read->caret};
}

QCoro::Task<std::optional<CaretReading>> ArmedField::stateWithLateText(TypingAttempt typed, TaskScope scope) {
    Instant deadline = clock_.now() + answerAwaited;
    bool isSilent = true;
    for (;;) {
        const auto reading = co_await state(typed, scope);
        if (reading && isSilent) {
            isSilent = false;
            deadline = clock_.now() + lateTextAwaited;
        }
        const bool isAwaited = !reading || caretAim(typed, reading).kind == CaretAim::Kind::missing;
        if (!isAwaited || !typed.typingElement || clock_.now() >= deadline) {
            co_return reading;
        }
        co_await sleep(clock_, betweenReads, scope);
    }
}

QCoro::Task<void> ArmedField::moveRight(TypingAttempt typed, qint64 times, TaskScope scope) {
    if (times < 1 || times > mostRightArrows) {
        co_return;
    }
    co_await press(typed, EditingKey::rightArrow, times, anywhere, scope);
    if (typed.typingSlack > 0) {
        // An arrow that takes effect late would carry the caret into the user's blanks.
        co_await sleep(clock_, untilArrowsTook, scope);
    }
}

QCoro::Task<bool> ArmedField::takeBack(TypingAttempt typed, QString reason, TaskScope scope) {
    const QString tag = QStringLiteral("[tirra-type] abandon(%1): ").arg(reason);
    const qint64 count = typed.typedLive.size();
    const qint64 end = endOfTyped(typed).value_or(0);
    const auto before = co_await stateWithLateText(typed, scope);
    const CaretAim target = caretAim(typed, before);
    if (target.kind == CaretAim::Kind::lost) {
        log_.diagLog(tag + QStringLiteral("lost aim on the field, %1 characters left in place").arg(count));
        co_return false;
    }
    if (target.kind == CaretAim::Kind::past) {
        log_.diagLog(tag + QStringLiteral("caret at %1 is past our %2 characters — left in place")
                               .arg(before->caret)
                               .arg(count));
        co_return false;
    }
    co_await moveRight(typed, target.gap, scope);
    const auto moved = co_await state(typed, scope);
    if (target.kind == CaretAim::Kind::missing || !moved || moved->caret != end) {
        const CaretReading seen = moved.value_or(*before);
        log_.diagLog(tag +
                     QStringLiteral("caret would not reach %1 (at %2 of %3), %4 characters left in place")
                         .arg(end)
                         .arg(seen.caret)
                         .arg(seen.length)
                         .arg(count));
        co_return false;
    }
    const bool clean = co_await deleteTyped(typed, tag, scope);
    co_return clean;
}

QCoro::Task<bool> ArmedField::deleteTyped(TypingAttempt typed, QString tag, TaskScope scope) {
    const qsizetype presses = graphemeCount(typed.typedLive);
    const qint64 wanted = *typed.typedStart + typed.typingSlack;
    co_await press(typed, EditingKey::deleteBackward, presses, *typed.typedStart, scope);
    const TypingField field{*typed.typingTarget, *typed.typingElement};
    const Duration patience = seconds(0.4 + 0.004 * static_cast<double>(presses));
    const bool isBack = co_await prober_.waitForFieldLength(field, wanted, patience, scope);
    if (isBack) {
        log_.diagLog(tag +
                     QStringLiteral("took back %1 characters, field back to %2").arg(presses).arg(wanted));
        co_return true;
    }
    const auto left = co_await state(typed, scope);
    log_.diagLog(tag + QStringLiteral("pressed %1 of %2 typed, field reads %3, wanted %4 — handing the text "
                                      "over instead")
                           .arg(presses)
                           .arg(typed.typedLive.size())
                           .arg(left ? left->length : -1)
                           .arg(wanted));
    co_return false;
}

QCoro::Task<bool> ArmedField::awaitOurs(TypingAttempt typed, EditingKey key, qint64 after, TaskScope scope) {
    const Instant deadline = clock_.now() + untilConsistent;
    for (;;) {
        const auto now = co_await state(typed, scope);
        const bool isOurs = now && now->caret > after &&
                            (key == EditingKey::rightArrow || now->length - now->caret == typed.typingSlack);
        if (isOurs || clock_.now() >= deadline || (now && now->caret <= after)) {
            co_return isOurs;
        }
        co_await sleep(clock_, afterDelete, scope);
    }
}

QCoro::Task<void> ArmedField::press(TypingAttempt typed, EditingKey key, qint64 times, qint64 after,
                                    TaskScope scope) {
    const bool secure = co_await isSecure(scope);
    if (secure || !keys_.canPost()) {
        co_return;
    }
    const Instant deadline = clock_.now() + untilKeysGoOut + times * untilKeyGoesOut;
    for (qint64 pressed = 0; pressed < times; ++pressed) {
        // The user may have gone elsewhere meanwhile, where the key would work on text that is not ours.
        const bool isOurs = co_await awaitOurs(typed, key, after, scope);
        if (!isOurs) {
            co_return;
        }
        keys_.press(key);
        const Duration pause = key == EditingKey::rightArrow ? afterRightArrow : afterDelete;
        co_await sleep(clock_, pause, scope);
        // Keys that pile up would work on whatever is there by then.
        while (keys_.isPending()) {
            if (clock_.now() >= deadline) {
                co_return;
            }
            co_await sleep(clock_, afterDelete, scope);
        }
    }
}

} // namespace lorvane
