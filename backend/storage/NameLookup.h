// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace lorvane::backend {

// What came of looking a name up.
struct FoundAddresses {
    std::vector<std::string> addresses; // numeric
    std::string failure;                // why there are none
};

// Looks host names up on threads of their own, since the system's resolver cannot be told when to stop: a
// name that gets no answer holds its thread as long as the resolver likes, and nobody else. Any thread.
class NameLookup {
 public:
    using Resolve = std::function<FoundAddresses(const std::string& name)>;
    using Time = std::chrono::steady_clock::time_point;

    // `resolve` may block, and is called once at a time for each name.
    explicit NameLookup(Resolve resolve = &askSystem) : resolve_(std::move(resolve)) {}

    // Waits until then at most. Who comes for a name that is being looked up waits for the same answer.
    FoundAddresses find(const std::string& name, Time latest);

    static FoundAddresses askSystem(const std::string& name);

 private:
    struct Question;
    std::shared_ptr<Question> questionFor(const std::string& name);

    const Resolve resolve_;
    std::mutex mutex_;
    std::map<std::string, std::weak_ptr<Question>> open_; // alive as long as somebody asks or answers
};

} // namespace lorvane::backend
