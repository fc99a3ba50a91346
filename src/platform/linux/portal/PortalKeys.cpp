// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/portal/PortalKeys.h"

#include <linux/input-event-codes.h>

namespace lorvane {

namespace {

constexpr Duration patience = std::chrono::milliseconds(500);
constexpr Duration pollPeriod = std::chrono::milliseconds(10);
/// Keys come one after the other with a look at the field in between.
constexpr Duration untilClose = std::chrono::milliseconds(300);

QCoro::Task<bool> awaitBareKeyboard(std::function<std::uint32_t()> heldModifiers, Clock& clock,
                                    TaskScope scope) {
    const Instant deadline = clock.now() + patience;
    while (heldModifiers() != 0 && clock.now() < deadline) {
        co_await sleep(clock, pollPeriod, scope);
    }
    co_return heldModifiers() == 0;
}

} // namespace

QCoro::Task<KeysOutcome> PortalPasteKeys::post(Aim aim, TaskScope scope) {
    if (facts_.pasteChord(PasteRoute::standard).empty() || !keyboard_.isOffered()) {
        co_return KeysOutcome::notPosted;
    }
    bool isReady = co_await awaitBareKeyboard(facts_.heldModifiers, clock_, scope);
    if (isReady) {
        isReady = co_await keyboard_.open(scope);
    }
    KeysOutcome outcome = KeysOutcome::notPosted;
    if (isReady && facts_.heldModifiers() == 0) {
        const std::vector<int> chord = facts_.pasteChord(aim());
        outcome = co_await keyboard_.chord(chord, scope);
    }
    keyboard_.close();
    co_return outcome;
}

void PortalEditingKeys::press(EditingKey key) {
    closing_.reset();
    queue_.push_back(key == EditingKey::rightArrow ? KEY_RIGHT : KEY_BACKSPACE);
    if (!pressing_.isRunning()) {
        pressing_ = startTask([this](TaskScope scope) { return pressQueued(scope); });
    }
}

// A key that cannot be posted takes those behind it along: they were meant for what it would have left.
QCoro::Task<void> PortalEditingKeys::pressQueued(TaskScope scope) {
    bool isPosted = true;
    while (isPosted && !queue_.empty()) {
        const std::vector<int> key{queue_.front()};
        queue_.pop_front();
        isPosted = co_await awaitBareKeyboard(facts_.heldModifiers, clock_, scope);
        if (isPosted) {
            const KeysOutcome outcome = co_await keyboard_.chord(key, scope);
            isPosted = outcome == KeysOutcome::posted;
        }
    }
    queue_.clear();
    closing_ = clock_.after(untilClose, [this] { keyboard_.close(); });
}

} // namespace lorvane
