// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <vector>

namespace lorvane::backend {

// Stops calls to a server that fails again and again, for longer and longer, and lets a single one through
// then. Not for several threads at once.
class CircuitBreaker {
 public:
    using TimePoint = std::chrono::steady_clock::time_point;
    bool allows(TimePoint now);
    void succeeded();
    void failed(TimePoint now);

    static constexpr int failuresToOpen = 3;
    static constexpr std::chrono::seconds firstPause{10};
    static constexpr std::chrono::seconds longestPause{120};

 private:
    int failures_ = 0;
    std::chrono::seconds pause_ = firstPause;
    std::optional<TimePoint> closedUntil_;
    bool probing_ = false; // the single one is under way
};

struct PooledServer {
    std::string url; // for the log
    std::size_t atOnce = 1;
};

struct PoolTimes {
    std::chrono::milliseconds queue = std::chrono::seconds(30); // for free places, all waits together
    std::chrono::milliseconds secondRound = std::chrono::milliseconds(200); // before all are tried once more
    std::chrono::milliseconds patience = std::chrono::hours(1); // no second round when the first took longer
};

// How asking one server ended.
struct Attempt {
    enum class End {
        done,
        next,    // the server is at fault, and another may be asked
        over,    // no other one is to be asked; whoever asked logs it
        stopped, // by the stop token
    };
    End end = End::next;
    std::string reason; // unless done; holds nothing that was sent or received
    bool fault = false; // `over` was the server's fault
};

// Of all requests to servers so far, each server that was asked for something counted.
struct ServerFigures {
    std::uint64_t calls = 0;
    std::uint64_t failures = 0; // that were the server's fault
    double seconds = 0;         // of all of them

    friend ServerFigures operator+(const ServerFigures& a, const ServerFigures& b) {
        return {a.calls + b.calls, a.failures + b.failures, a.seconds + b.seconds};
    }
};

// Servers in order of preference: one that cannot be reached, is too busy or fails leaves the work to the
// next; after the last one all are tried once more. Any thread, several calls at once; a call blocks.
class ServerPool {
 public:
    using Ask = std::function<Attempt(std::size_t server)>; // by its place in the list

    // `kind` says in the log what they are.
    ServerPool(std::string kind, std::vector<PooledServer> servers, PoolTimes times = {});
    ~ServerPool();
    ServerPool(const ServerPool&) = delete;
    ServerPool& operator=(const ServerPool&) = delete;

    Attempt run(const Ask& ask, const std::stop_token& stop);
    ServerFigures figures() const;

 private:
    struct Place;
    Attempt tryAll(const Ask& ask, std::chrono::milliseconds& queue, const std::stop_token& stop);
    Place* enter(std::set<const Place*>& tried, std::chrono::milliseconds& queue,
                 const std::stop_token& stop);
    void leave(Place& place, const Attempt& attempt, std::chrono::steady_clock::duration took);

    const std::string kind_;
    const PoolTimes times_;
    mutable std::mutex mutex_;
    std::condition_variable_any changed_;
    std::vector<std::unique_ptr<Place>> places_;
    ServerFigures figures_;
};

} // namespace lorvane::backend
