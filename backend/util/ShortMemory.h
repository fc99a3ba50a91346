// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <utility>

namespace lorvane::backend {

// What was found out lately and may be used again for a short time, of a bounded number of keys. Any thread.
template <class Key, class Value, class Hash = std::hash<Key>>
class ShortMemory {
 public:
    using Time = std::chrono::steady_clock::time_point;
    using Now = std::function<Time()>;

    explicit ShortMemory(std::size_t most, Now now = &std::chrono::steady_clock::now)
        : mostOfAnAge_(most / 2), now_(std::move(now)) {}

    void remember(const Key& key, Value value) {
        const auto now = now_();
        const std::lock_guard lock(mutex_);
        if (young_.size() >= mostOfAnAge_)
            old_ = std::exchange(young_, {});
        young_.insert_or_assign(key, Entry{std::move(value), now});
    }
    // Nothing when it was remembered longer than `atMost` ago.
    std::optional<Value> recall(const Key& key, std::chrono::milliseconds atMost) {
        const auto oldest = now_() - atMost;
        const std::lock_guard lock(mutex_);
        for (const auto* entries : {&young_, &old_})
            if (const auto found = entries->find(key); found != entries->end())
                return found->second.at > oldest ? std::optional(found->second.value) : std::nullopt;
        return std::nullopt;
    }
    void forget(const Key& key) {
        const std::lock_guard lock(mutex_);
        young_.erase(key);
        old_.erase(key);
    }

 private:
    struct Entry {
        Value value;
        Time at;
    };
    using Entries = std::unordered_map<Key, Entry, Hash>;

    const std::size_t mostOfAnAge_;
    const Now now_;
    std::mutex mutex_;
    // When the young are too many they become the old, and the old go.
    Entries young_;
    Entries old_;
};

} // namespace lorvane::backend
