// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/testing/FakeStateFile.h"

#include <chrono>

namespace lorvane {

namespace {

constexpr std::chrono::seconds generously(20);

} // namespace

StateFile::Content FakeStateFile::read() {
    const std::lock_guard lock(mutex_);
    return content_;
}

bool FakeStateFile::replace(const QByteArray& bytes, Predecessor predecessor) {
    std::unique_lock lock(mutex_);
    standing_ = held_;
    changed_.notify_all();
    changed_.wait(lock, [this] { return !held_; });
    standing_ = false;
    ++attempts_;
    if (!failing_) {
        if (predecessor == Predecessor::setAside && !std::holds_alternative<Absent>(content_)) {
            aside_.push_back(content_);
        }
        content_ = bytes;
        written_.push_back(bytes);
    }
    changed_.notify_all();
    return !failing_;
}

bool FakeStateFile::waitForAttempts(std::size_t count) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, generously, [&] { return attempts_ >= count; });
}

bool FakeStateFile::waitForHeldWrite() {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, generously, [this] { return standing_; });
}

void FakeStateFile::setFailing(bool failing) {
    const std::lock_guard lock(mutex_);
    failing_ = failing;
}

void FakeStateFile::setHeld(bool held) {
    const std::lock_guard lock(mutex_);
    held_ = held;
    changed_.notify_all();
}

std::size_t FakeStateFile::attempts() {
    const std::lock_guard lock(mutex_);
    return attempts_;
}

std::vector<QByteArray> FakeStateFile::written() {
    const std::lock_guard lock(mutex_);
    return written_;
}

std::vector<StateFile::Content> FakeStateFile::setAside() {
    const std::lock_guard lock(mutex_);
    return aside_;
}

} // namespace lorvane
