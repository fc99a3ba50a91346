// SPDX-License-Identifier: GPL-3.0-or-later
#include "input/testing/FakeHoldRoad.h"

namespace lorvane {

Handle FakeHoldRoad::watch(std::vector<int> keyCodes, std::function<void(const HoldEdge&)> observer) {
    ++watchesBegun;
    watch_ = std::make_shared<Watch>(Watch{std::move(keyCodes), std::move(observer)});
    return Handle([this, weak = std::weak_ptr(watch_)] {
        if (weak.lock() == watch_) {
            watch_.reset();
        }
    });
}

QCoro::Task<std::optional<bool>> FakeHoldRoad::isHeld(int keyCode, TaskScope scope) {
    ++stateQueries;
    if (answerDelay > Duration::zero()) {
        co_await sleep(clock_, answerDelay, scope);
    }
    if (!held) {
        co_return std::nullopt;
    }
    co_return held->contains(keyCode);
}

void FakeHoldRoad::tell(const HoldEdge& edge) {
    // The observer may end the watch.
    if (const auto watch = watch_) {
        watch->observer(edge);
    }
}

} // namespace lorvane
