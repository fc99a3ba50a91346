// SPDX-License-Identifier: GPL-3.0-or-later
#include "net/ServerPool.h"

#include "util/Log.h"

#include <algorithm>
#include <random>

namespace lorvane::backend {

bool CircuitBreaker::allows(TimePoint now) {
    if (!closedUntil_)
        return true;
    if (now < *closedUntil_)
        return false;
    closedUntil_ = now + pause_; // one goes through; the others wait for how it ends
    probing_ = true;
    return true;
}

void CircuitBreaker::succeeded() {
    failures_ = 0;
    pause_ = firstPause;
    closedUntil_.reset();
    probing_ = false;
}

void CircuitBreaker::failed(TimePoint now) {
    // Who had been let in before, and fails as the others did, tells nothing new.
    if (closedUntil_ && !probing_)
        return;
    if (!closedUntil_ && ++failures_ < failuresToOpen)
        return;
    if (closedUntil_)
        pause_ = std::min(pause_ * 2, longestPause);
    probing_ = false;
    closedUntil_ = now + pause_;
}

// A server, with the requests that are there now.
struct ServerPool::Place {
    std::size_t index = 0;
    PooledServer server;
    CircuitBreaker breaker;
    std::size_t busy = 0;
};

ServerPool::ServerPool(std::string kind, std::vector<PooledServer> servers, PoolTimes times)
    : kind_(std::move(kind)), times_(times) {
    for (auto& server : servers)
        places_.push_back(std::make_unique<Place>(Place{places_.size(), std::move(server), {}, 0}));
}

ServerPool::~ServerPool() = default;

// Everybody may be restarting at once; a second look a moment later is cheap.
Attempt ServerPool::run(const Ask& ask, const std::stop_token& stop) {
    const auto began = std::chrono::steady_clock::now();
    auto queue = times_.queue;
    auto attempt = tryAll(ask, queue, stop);
    if (attempt.end != Attempt::End::next || std::chrono::steady_clock::now() - began >= times_.patience)
        return attempt;
    thread_local std::minstd_rand random{std::random_device{}()};
    const auto pause = times_.secondRound + times_.secondRound * (random() % 100) / 100;
    {
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, stop, pause, [] { return false; });
    }
    return stop.stop_requested() ? Attempt{Attempt::End::stopped, {}} : tryAll(ask, queue, stop);
}

Attempt ServerPool::tryAll(const Ask& ask, std::chrono::milliseconds& queue, const std::stop_token& stop) {
    Attempt last{Attempt::End::next, "no " + kind_ + " server is to be tried now"};
    std::set<const Place*> tried;
    while (Place* place = enter(tried, queue, stop)) {
        // Whatever happens while asking, the place is free again afterwards.
        struct Leaving {
            ServerPool& pool;
            Place& place;
            Attempt& attempt;
            std::chrono::steady_clock::time_point entered = std::chrono::steady_clock::now();
            ~Leaving() { pool.leave(place, attempt, std::chrono::steady_clock::now() - entered); }
        };
        last = {Attempt::End::next, "it could not be asked"};
        {
            const Leaving leaving{*this, *place, last};
            last = ask(place->index);
        }
        if (last.end == Attempt::End::next)
            logLine(kind_ + " server " + place->server.url + ": " + last.reason);
        if (last.end != Attempt::End::next)
            break;
    }
    return stop.stop_requested() ? Attempt{Attempt::End::stopped, {}} : last;
}

// The first server, in order, that was not tried and has room; when all of those are full, the first that
// gets room within the time that is left of the queue's.
ServerPool::Place* ServerPool::enter(std::set<const Place*>& tried, std::chrono::milliseconds& queue,
                                     const std::stop_token& stop) {
    const auto open = [&](const auto& place) { return !tried.contains(place.get()); };
    const auto hasRoom = [&](const auto& place) { return open(place) && place->busy < place->server.atOnce; };
    const auto latest = std::chrono::steady_clock::now() + queue;
    std::unique_lock lock(mutex_);
    while (std::any_of(places_.begin(), places_.end(), open)) {
        const bool room = changed_.wait_until(
            lock, stop, latest, [&] { return std::any_of(places_.begin(), places_.end(), hasRoom); });
        queue =
            std::max(std::chrono::ceil<std::chrono::milliseconds>(latest - std::chrono::steady_clock::now()),
                     std::chrono::milliseconds(0));
        if (!room || stop.stop_requested())
            break;
        const auto& place = *std::find_if(places_.begin(), places_.end(), hasRoom);
        tried.insert(place.get());
        if (!place->breaker.allows(std::chrono::steady_clock::now()))
            continue;
        ++place->busy;
        return place.get();
    }
    return nullptr;
}

ServerFigures ServerPool::figures() const {
    const std::lock_guard lock(mutex_);
    return figures_;
}

void ServerPool::leave(Place& place, const Attempt& attempt, std::chrono::steady_clock::duration took) {
    {
        const std::lock_guard lock(mutex_);
        --place.busy;
        const bool fault =
            attempt.end == Attempt::End::next || (attempt.end == Attempt::End::over && attempt.fault);
        ++figures_.calls;
        figures_.failures += fault ? 1 : 0;
        figures_.seconds += std::chrono::duration<double>(took).count();
        if (fault)
            place.breaker.failed(std::chrono::steady_clock::now());
        else if (attempt.end != Attempt::End::stopped)
            place.breaker.succeeded();
    }
    changed_.notify_all();
}

} // namespace lorvane::backend
