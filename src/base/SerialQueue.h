// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace lorvane {

/// Work that runs off the main thread, one piece after the other, in the order of submission. `submit` may be
/// called from any thread. The end of the queue waits for the work that was submitted before it.
class SerialQueue {
 public:
    SerialQueue();
    ~SerialQueue();
    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;

    void submit(std::function<void()> work);
    /// Blocks until everything submitted so far has run.
    void drain();

 private:
    void run();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> work_;
    bool busy_ = false;
    bool ending_ = false;
    std::thread thread_;
};

} // namespace lorvane
