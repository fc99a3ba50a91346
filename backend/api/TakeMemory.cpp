// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/TakeMemory.h"

#include <algorithm>

namespace lorvane::backend {

TakeProgress::Turn::Turn(TakeProgress& progress, const std::stop_token& stop) : progress_(progress) {
    ++progress.users_;
    std::unique_lock lock(progress.mutex_);
    held_ = progress.changed_.wait(lock, stop, [&] { return !progress.running_; });
    if (held_)
        progress.running_ = true;
}

TakeProgress::Turn::~Turn() {
    --progress_.users_;
    if (!held_)
        return;
    {
        const std::lock_guard lock(progress_.mutex_);
        progress_.running_ = false;
    }
    progress_.changed_.notify_one();
}

TakeMemory::TakeMemory(std::chrono::seconds keptFor, Now now, std::size_t most)
    : keptFor_(keptFor), now_(std::move(now)), most_(most) {}

std::shared_ptr<TakeProgress> TakeMemory::find(DeviceId device, const TakeId& take) {
    if (!take)
        return std::make_shared<TakeProgress>();
    const auto now = now_();
    const std::lock_guard lock(mutex_);
    sweepLocked(now);
    if (const auto found = entries_.find({device, *take}); found != entries_.end()) {
        found->second.until = now + keptFor_;
        return found->second.progress;
    }
    auto progress = std::make_shared<TakeProgress>();
    if (entries_.size() < most_)
        entries_.insert_or_assign({device, *take}, Entry{now + keptFor_, progress});
    return progress;
}

void TakeMemory::sweep() {
    const std::lock_guard lock(mutex_);
    sweepLocked(now_());
}

std::size_t TakeMemory::size() const {
    const std::lock_guard lock(mutex_);
    return entries_.size();
}

void TakeMemory::sweepLocked(TimePoint now) {
    for (auto& [key, entry] : entries_)
        if (entry.progress->inUse()) // its time begins when nobody is at it any more
            entry.until = now + keptFor_;
    std::erase_if(entries_, [&](const auto& entry) { return entry.second.until <= now; });
}

} // namespace lorvane::backend
