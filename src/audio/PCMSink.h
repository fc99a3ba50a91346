// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

#include <QByteArray>
#include <QString>

#include <atomic>
#include <mutex>
#include <optional>
#include <vector>

namespace lorvane {

/// Where the audio thread puts what it captured and the main thread takes it from. Any thread.
class PCMSink {
 public:
    /// A level strictly below is quiet.
    static constexpr double quietBound = 0.18;
    static constexpr std::size_t mostLevels = 60'000;

    explicit PCMSink(const Clock& clock) : clock_(clock) {}

    /// `level`: of the buffer that these bytes came from, 0.0 to 1.0.
    void append(const QByteArray& pcm, double level);
    void reset();
    /// Takes the PCM out; everything else stays until the next reset.
    [[nodiscard]] QByteArray drain();
    /// One line about how loud the take was, for the log.
    [[nodiscard]] QString levelSummary() const;

    /// For display: read without the lock, so it may be one buffer old.
    [[nodiscard]] double lastLevel() const { return lastLevel_.load(std::memory_order_relaxed); }
    /// When the present run of quiet buffers began; nothing while there is sound.
    [[nodiscard]] std::optional<Instant> quietSince() const;
    [[nodiscard]] std::size_t levelCount() const;
    [[nodiscard]] qsizetype pcmSize() const;

 private:
    const Clock& clock_;
    mutable std::mutex lock_;
    QByteArray pcm_;
    std::atomic<double> lastLevel_{0.0};
    std::optional<Instant> quietSince_;
    std::vector<double> levels_;
};

} // namespace lorvane
