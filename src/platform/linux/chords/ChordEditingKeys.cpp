// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/chords/ChordEditingKeys.h"

#include <linux/input-event-codes.h>

namespace lorvane {

namespace {

/// Keys come one after the other with a look at the field in between.
constexpr Duration untilClose = std::chrono::milliseconds(300);

} // namespace

void ChordEditingKeys::press(EditingKey key) {
    closing_.reset();
    queue_.push_back(key == EditingKey::rightArrow ? KEY_RIGHT : KEY_BACKSPACE);
    if (!pressing_.isRunning()) {
        pressing_ = startTask([this](TaskScope scope) { return pressQueued(scope); });
    }
}

QCoro::Task<void> ChordEditingKeys::pressQueued(TaskScope scope) {
    bool isPosted = true;
    while (isPosted && !queue_.empty()) {
        const std::vector<int> key{queue_.front()};
        queue_.pop_front();
        isPosted = co_await awaitBareKeyboard(facts_, clock_, scope);
        if (isPosted) {
            const std::function<bool()> withoutModifiers = [] { return true; };
            const KeysOutcome outcome = co_await keyboard_.chord(key, withoutModifiers, scope);
            isPosted = outcome == KeysOutcome::posted;
        }
    }
    queue_.clear();
    closing_ = clock_.after(untilClose, [this] {
        if (!keyboard_.isPosting()) { // a paste closes what it uses
            keyboard_.close();
        }
    });
}

} // namespace lorvane
