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

QCoro::Task<bool> PortalPasteKeys::post(PasteRoute route, TaskScope scope) {
    const std::vector<int> chord = facts_.pasteChord(route);
    if (chord.empty() || !keyboard_.isOffered()) {
        co_return false;
    }
    const bool isBare = co_await awaitBareKeyboard(facts_.heldModifiers, clock_, scope);
    if (!isBare) {
        co_return false;
    }
    const bool posted = co_await keyboard_.chord(chord, scope);
    keyboard_.close();
    co_return posted;
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
            isPosted = co_await keyboard_.chord(key, scope);
        }
    }
    queue_.clear();
    closing_ = clock_.after(untilClose, [this] { keyboard_.close(); });
}

} // namespace lorvane
