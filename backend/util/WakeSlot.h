// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <mutex>
#include <utility>

namespace lorvane::backend {

// How a worker wakes the one who waits for it, who may have left. After disarm() has returned, the callback
// is not called any more. Any thread.
class WakeSlot {
 public:
    void arm(std::function<void()> wake) {
        const std::lock_guard lock(mutex_);
        wake_ = std::move(wake);
    }
    void disarm() { arm({}); }
    void wake() {
        const std::lock_guard lock(mutex_);
        if (wake_)
            wake_();
    }

 private:
    std::mutex mutex_;
    std::function<void()> wake_;
};

// Armed as long as this lives.
class ArmedSlot {
 public:
    ArmedSlot(WakeSlot& slot, std::function<void()> wake) : slot_(slot) { slot_.arm(std::move(wake)); }
    ~ArmedSlot() { slot_.disarm(); }
    ArmedSlot(const ArmedSlot&) = delete;
    ArmedSlot& operator=(const ArmedSlot&) = delete;

 private:
    WakeSlot& slot_;
};

} // namespace lorvane::backend
