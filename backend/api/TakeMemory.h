// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/Dictated.h"
#include "engines/Engine.h"
#include "storage/Storage.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

namespace lorvane::backend {

// What has been recognised of one take, and in the end what became of it. A take that comes a second time
// (its stream broke, and the one-shot upload follows) goes on from here, so that no segment is recognised
// twice.
class TakeProgress {
 public:
    // Holds the take for one request. The second request of a take waits for the first to end.
    class Turn {
     public:
        Turn(TakeProgress& progress, const std::stop_token& stop);
        ~Turn();
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;
        explicit operator bool() const { return held_; } // false: stopped while waiting

        // Valid while the turn is held.
        std::vector<HeardSegment>& segments() { return progress_.segments_; }
        bool& complete() { return progress_.complete_; }
        std::optional<Dictated>& dictated() { return progress_.dictated_; }

     private:
        TakeProgress& progress_;
        bool held_ = false;
    };
    // Somebody holds it, or waits for it.
    bool inUse() const { return users_ > 0; }

 private:
    std::atomic<int> users_ = 0;
    std::mutex mutex_;
    std::condition_variable_any changed_;
    bool running_ = false;
    std::vector<HeardSegment> segments_;
    bool complete_ = false;
    std::optional<Dictated> dictated_;
};

// Keeps the progress of takes in memory for a while; nothing of it is ever written anywhere.
class TakeMemory {
 public:
    using TimePoint = std::chrono::steady_clock::time_point;
    using Now = std::function<TimePoint()>;

    explicit TakeMemory(std::chrono::seconds keptFor = std::chrono::minutes(2),
                        Now now = &std::chrono::steady_clock::now, std::size_t most = 10'000);

    // The same object for the same take of a device within the time kept, which does not pass while somebody
    // is at it; a fresh one otherwise. Any thread.
    std::shared_ptr<TakeProgress> find(DeviceId device, const TakeId& take);
    // Drops what is past its time.
    void sweep();
    std::size_t size() const;

 private:
    struct Entry {
        TimePoint until;
        std::shared_ptr<TakeProgress> progress;
    };
    using Key = std::pair<DeviceId, Digest>;
    void sweepLocked(TimePoint now);

    const std::chrono::seconds keptFor_;
    const Now now_;
    const std::size_t most_;
    mutable std::mutex mutex_;
    std::map<Key, Entry> entries_;
};

} // namespace lorvane::backend
