// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/gnome/GnomeEditingKeys.h"

#include <linux/input-event-codes.h>

namespace lorvane {

namespace {

constexpr Duration patience = std::chrono::milliseconds(500);
constexpr Duration pollPeriod = std::chrono::milliseconds(10);
/// Keys come one after the other with a look at the field in between.
constexpr Duration untilClose = std::chrono::milliseconds(300);

} // namespace

void GnomeEditingKeys::press(EditingKey key) {
    closing_.reset();
    queue_.push_back(key == EditingKey::rightArrow ? KEY_RIGHT : KEY_BACKSPACE);
    if (!pressing_.isRunning()) {
        pressing_ = startTask([this](TaskScope scope) { return pressQueued(scope); });
    }
}

QCoro::Task<void> GnomeEditingKeys::pressQueued(TaskScope scope) {
    while (!queue_.empty()) {
        const int key = queue_.front();
        queue_.pop_front();
        const bool isBare = co_await awaitBareKeyboard(scope);
        if (!isBare) {
            queue_.clear();
            break;
        }
        const std::vector<int> alone{key};
        const std::function<bool()> withoutModifiers = [] { return true; };
        const KeysOutcome outcome = co_await keys_.chord(alone, withoutModifiers, scope);
        if (outcome != KeysOutcome::posted) {
            queue_.clear();
        }
    }
    closing_ = clock_.after(untilClose, [this] {
        if (!keys_.isPosting()) { // a paste closes what it uses
            keys_.close();
        }
    });
}

QCoro::Task<bool> GnomeEditingKeys::awaitBareKeyboard(TaskScope scope) {
    const Instant deadline = clock_.now() + patience;
    while (keyboard_.heldModifiers() != 0 && clock_.now() < deadline) {
        co_await sleep(clock_, pollPeriod, scope);
    }
    co_return keyboard_.heldModifiers() == 0;
}

} // namespace lorvane
