// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/testing/VirtualClock.h"

#include <algorithm>

namespace lorvane {

WallTime VirtualClock::wallNow() const {
    using namespace std::chrono;
    return WallTime(sys_days(2026y / January / 5) + 10h) + Duration(elapsed_.load());
}

Handle VirtualClock::after(Duration delay, std::function<void()> work) {
    return add(delay, Duration::zero(), std::move(work));
}

Handle VirtualClock::every(Duration period, std::function<void()> work) {
    return add(period, period, std::move(work));
}

Handle VirtualClock::add(Duration delay, Duration period, std::function<void()> work) {
    const std::uint64_t id = ++lastId_;
    const Duration due = Duration(elapsed_.load()) + std::max(delay, Duration::zero());
    timers_->emplace(id, Timer{due, period, std::make_shared<std::function<void()>>(std::move(work))});
    return Handle([weak = std::weak_ptr(timers_), id] {
        if (auto timers = weak.lock()) {
            timers->erase(id);
        }
    });
}

void VirtualClock::advance(Duration duration) {
    const Duration end = Duration(elapsed_.load()) + duration;
    const auto timers = timers_;
    for (;;) {
        const auto next = std::min_element(timers->begin(), timers->end(), [](const auto& a, const auto& b) {
            return a.second.due < b.second.due;
        });
        if (next == timers->end() || next->second.due > end) {
            break;
        }
        elapsed_ = std::max(Duration(elapsed_.load()), next->second.due).count();
        const auto work = next->second.work;
        if (next->second.period > Duration::zero()) {
            next->second.due += next->second.period;
        } else {
            timers->erase(next);
        }
        (*work)();
    }
    elapsed_ = std::max(Duration(elapsed_.load()), end).count();
}

} // namespace lorvane
