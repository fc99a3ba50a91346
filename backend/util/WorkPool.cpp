// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/WorkPool.h"

#include <utility>

namespace lorvane::backend {

namespace {
thread_local bool jobIsAside = false;
}

WorkPool::WorkPool(std::size_t threads, std::size_t queueBound, std::size_t aside)
    : atOnce_(threads), bound_(queueBound) {
    threads_.reserve(threads + aside);
    for (std::size_t i = 0; i < threads + aside; ++i)
        threads_.emplace_back([this] { work(); });
}

WorkPool::~WorkPool() {
    std::deque<Job> dropped;
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
        dropped.swap(jobs_);
    }
    wake_.notify_all();
    for (auto& thread : threads_)
        thread.join();
}

bool WorkPool::submit(Job job) {
    {
        const std::lock_guard lock(mutex_);
        if (ending_ || jobs_.size() >= bound_)
            return false;
        jobs_.push_back(std::move(job));
    }
    wake_.notify_one();
    return true;
}

void WorkPool::stepAside() {
    if (std::exchange(jobIsAside, true))
        return;
    {
        const std::lock_guard lock(mutex_);
        --running_;
        ++aside_;
    }
    wake_.notify_one();
}

std::size_t WorkPool::aside() const {
    const std::lock_guard lock(mutex_);
    return aside_;
}

std::size_t WorkPool::queued() const {
    const std::lock_guard lock(mutex_);
    return jobs_.size();
}

std::size_t WorkPool::running() const {
    const std::lock_guard lock(mutex_);
    return running_;
}

void WorkPool::work() {
    for (;;) {
        Job job;
        {
            std::unique_lock lock(mutex_);
            wake_.wait(lock, [this] { return ending_ || (!jobs_.empty() && running_ < atOnce_); });
            if (ending_)
                return;
            job = std::move(jobs_.front());
            jobs_.pop_front();
            ++running_;
        }
        jobIsAside = false;
        job();
        job = {}; // what it holds goes before it counts as done
        const std::lock_guard lock(mutex_);
        --(jobIsAside ? aside_ : running_);
    }
}

} // namespace lorvane::backend
