// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Handle.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>

namespace lorvane {

/// Observers of one thing, told in the order in which they subscribed. Main thread. An observer may subscribe
/// or end any subscription while it is told; one that ended is not told any more, a new one from the next
/// time on.
template <typename... Args>
class Signal {
 public:
    using Observer = std::function<void(const Args&...)>;

    [[nodiscard]] Handle subscribe(Observer observer) {
        const std::uint64_t id = ++observers_->lastId;
        observers_->byId.emplace(id, std::make_shared<Observer>(std::move(observer)));
        return Handle([weak = std::weak_ptr(observers_), id] {
            if (auto observers = weak.lock()) {
                observers->byId.erase(id);
            }
        });
    }

    void emit(const Args&... args) const {
        const auto observers = observers_;
        const std::uint64_t newest = observers->lastId;
        for (auto it = observers->byId.begin(); it != observers->byId.end() && it->first <= newest;) {
            const std::uint64_t id = it->first;
            const auto observer = it->second;
            (*observer)(args...);
            it = observers->byId.upper_bound(id);
        }
    }

 private:
    struct Observers {
        std::uint64_t lastId = 0;
        std::map<std::uint64_t, std::shared_ptr<Observer>> byId;
    };
    std::shared_ptr<Observers> observers_ = std::make_shared<Observers>();
};

} // namespace lorvane
