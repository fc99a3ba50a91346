// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "storage/PostgresLink.h"
#include "storage/RetryPause.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <random>
#include <vector>

namespace lorvane::backend {

// A bounded number of connections. While the database is away nobody waits for it: one caller after each
// pause tries, all others are refused at once. Any thread.
class PostgresPool {
 public:
    // A connection for one caller; goes back with its owner.
    class Lease {
     public:
        Lease(PostgresPool& pool, std::unique_ptr<PostgresLink> link) : pool_(pool), link_(std::move(link)) {}
        ~Lease() {
            if (link_)
                pool_.giveBack(std::move(link_));
        }
        Lease(Lease&& other) noexcept = default;
        Lease& operator=(Lease&&) = delete;
        PostgresLink& operator*() { return *link_; }
        PostgresLink* operator->() { return link_.get(); }

     private:
        PostgresPool& pool_;
        std::unique_ptr<PostgresLink> link_;
    };

    explicit PostgresPool(PostgresOptions options);

    // Throws StorageAway, and StorageError when all connections stay in use.
    Lease lease();

 private:
    void awaitRoom(std::unique_lock<std::mutex>& lock);
    std::unique_ptr<PostgresLink> takeIdle(); // with the lock held; nothing when there is none
    void giveBack(std::unique_ptr<PostgresLink> link);
    void noteFailure(const std::string& reason);
    void noteSuccess();

    const PostgresOptions options_;
    NameLookup names_;
    std::mutex mutex_;
    std::condition_variable room_;
    std::vector<std::unique_ptr<PostgresLink>> idle_;
    std::size_t inUse_ = 0;
    RetryPause pause_;
    bool trying_ = false; // somebody looks whether the database is back
    std::minstd_rand random_{std::random_device{}()};
};

} // namespace lorvane::backend
