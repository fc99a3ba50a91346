// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>

namespace lorvane::backend {

// How many there are, and a wait for the last of them to go. Any thread.
class ConnectionCount {
 public:
    void add() { ++count_; }
    void remove() {
        if (--count_ > 0)
            return;
        const std::lock_guard lock(
            mutex_); // after the look and before the sleep of who waits there is no gap
        none_.notify_all();
    }
    std::size_t count() const { return count_; }
    // False when there are some still at that time.
    bool waitForNone(std::chrono::steady_clock::time_point latest) {
        std::unique_lock lock(mutex_);
        return none_.wait_until(lock, latest, [this] { return count_ == 0; });
    }

 private:
    std::atomic<std::size_t> count_ = 0;
    std::mutex mutex_;
    std::condition_variable none_;
};

} // namespace lorvane::backend
