// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/SerialQueue.h"

namespace lorvane {

SerialQueue::SerialQueue() : thread_([this] { run(); }) {}

SerialQueue::~SerialQueue() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

void SerialQueue::submit(std::function<void()> work) {
    {
        const std::lock_guard lock(mutex_);
        work_.push_back(std::move(work));
    }
    changed_.notify_all();
}

void SerialQueue::drain() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return work_.empty() && !busy_; });
}

void SerialQueue::run() {
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return ending_ || !work_.empty(); });
        if (work_.empty()) {
            return;
        }
        const auto work = std::move(work_.front());
        work_.pop_front();
        busy_ = true;
        lock.unlock();
        work();
        lock.lock();
        busy_ = false;
        changed_.notify_all();
    }
}

} // namespace lorvane
