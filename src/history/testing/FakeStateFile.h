// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/StateFile.h"

#include <condition_variable>
#include <mutex>
#include <vector>

namespace lorvane {

/// A state file in memory. A test waits for what is written off its thread, makes it fail, or stops it in its
/// middle.
class FakeStateFile final : public StateFile {
 public:
    explicit FakeStateFile(Content content = Absent()) : content_(std::move(content)) {}

    [[nodiscard]] Content read() override;
    [[nodiscard]] bool replace(const QByteArray& bytes, Predecessor predecessor) override;

    /// Whether so many attempts to write have ended, now or within seconds.
    [[nodiscard]] bool waitForAttempts(std::size_t count);
    /// Whether a write has begun and stands still.
    [[nodiscard]] bool waitForHeldWrite();
    /// From now on: writes fail; writes stand still in their middle.
    void setFailing(bool failing);
    void setHeld(bool held);
    [[nodiscard]] std::size_t attempts();
    /// What was written, in order, without the attempts that failed.
    [[nodiscard]] std::vector<QByteArray> written();
    [[nodiscard]] std::vector<Content> setAside();

 private:
    std::mutex mutex_;
    std::condition_variable changed_;
    Content content_;
    std::vector<QByteArray> written_;
    std::vector<Content> aside_;
    std::size_t attempts_ = 0;
    bool failing_ = false;
    bool held_ = false;
    bool standing_ = false;
};

} // namespace lorvane
