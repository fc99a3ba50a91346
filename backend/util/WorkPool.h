// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace lorvane::backend {

// A fixed number of threads and a queue that does not grow past its bound.
// Jobs must not throw. The destructor drops what is still queued and joins the jobs that run; a long job has
// to watch its own stop token for that to be quick.
class WorkPool {
 public:
    using Job = std::function<void()>;

    // `aside`: jobs beside those that may be waiting for others, see stepAside().
    WorkPool(std::size_t threads, std::size_t queueBound, std::size_t aside = 0);
    ~WorkPool();
    WorkPool(const WorkPool&) = delete;
    WorkPool& operator=(const WorkPool&) = delete;

    // False when the queue is full or the pool is ending; the job is then not run. Any thread.
    [[nodiscard]] bool submit(Job job);
    // For a job of this pool: what is left of it is waiting for others, so that the next may begin.
    void stepAside();
    std::size_t queued() const;
    std::size_t running() const; // without those aside
    std::size_t aside() const;

 private:
    void work();

    const std::size_t atOnce_;
    const std::size_t bound_;
    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<Job> jobs_;
    bool ending_ = false;
    std::size_t running_ = 0;
    std::size_t aside_ = 0;
    std::vector<std::thread> threads_;
};

} // namespace lorvane::backend
