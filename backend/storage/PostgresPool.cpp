// SPDX-License-Identifier: GPL-3.0-or-later
#include "storage/PostgresPool.h"

#include "util/Log.h"

namespace lorvane::backend {

using Clock = std::chrono::steady_clock;

PostgresPool::PostgresPool(PostgresOptions options)
    : options_(std::move(options)), names_(options_.resolve) {}

void PostgresPool::awaitRoom(std::unique_lock<std::mutex>& lock) {
    const auto refused = [this] { return pause_.failing() && (trying_ || pause_.resting(Clock::now())); };
    const bool room =
        room_.wait_for(lock, options_.timeout, [&] { return refused() || inUse_ < options_.connections; });
    if (refused())
        throw StorageAway("the database is away");
    if (!room)
        throw StorageError("all connections to the database are in use");
}

std::unique_ptr<PostgresLink> PostgresPool::takeIdle() {
    while (!idle_.empty()) {
        auto link = std::move(idle_.back());
        idle_.pop_back();
        if (link->stillThere())
            return link;
    }
    return nullptr;
}

PostgresPool::Lease PostgresPool::lease() {
    std::unique_ptr<PostgresLink> link;
    {
        std::unique_lock lock(mutex_);
        awaitRoom(lock);
        ++inUse_;
        trying_ = pause_.failing();
        link = takeIdle();
    }
    try {
        if (!link)
            link = std::make_unique<PostgresLink>(options_, names_);
    } catch (const StorageError& error) {
        {
            const std::lock_guard lock(mutex_);
            --inUse_;
            noteFailure(error.what());
        }
        room_.notify_all();
        throw;
    }
    return {*this, std::move(link)};
}

void PostgresPool::giveBack(std::unique_ptr<PostgresLink> link) {
    {
        const std::lock_guard lock(mutex_);
        --inUse_;
        if (link->broken()) {
            noteFailure("a connection to the database broke");
        } else {
            noteSuccess();
            idle_.push_back(std::move(link));
        }
    }
    room_.notify_all();
}

// What is idle went the same way, or is found out one by one.
void PostgresPool::noteFailure(const std::string& reason) {
    if (!pause_.failing())
        logLine(reason + "; trying again from time to time");
    idle_.clear();
    // Connections that were in use break together: that is one failure.
    if (pause_.resting(Clock::now()))
        return;
    trying_ = false;
    pause_.failed(Clock::now(), std::uniform_real_distribution<double>()(random_));
}

void PostgresPool::noteSuccess() {
    if (pause_.failing())
        logLine("the database is back");
    trying_ = false;
    pause_.succeeded();
}

} // namespace lorvane::backend
