// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/PCMSink.h"

#include <algorithm>
#include <utility>

namespace lorvane {

namespace {

// `sorted` ascending and not empty.
double pointOf(const std::vector<double>& sorted, double share) {
    const auto index = static_cast<std::size_t>(share * static_cast<double>(sorted.size()));
    return sorted[std::min(sorted.size() - 1, index)];
}

} // namespace

void PCMSink::append(const QByteArray& pcm, double level) {
    const std::lock_guard guard(lock_);
    pcm_.append(pcm);
    lastLevel_.store(level, std::memory_order_relaxed);
    if (levels_.size() < mostLevels) {
        levels_.push_back(level);
    }
    if (level >= quietBound) {
        quietSince_.reset();
    } else if (!quietSince_) {
        quietSince_ = clock_.now();
    }
}

void PCMSink::reset() {
    const std::lock_guard guard(lock_);
    pcm_.clear();
    lastLevel_.store(0.0, std::memory_order_relaxed);
    quietSince_.reset();
    levels_.clear();
}

QByteArray PCMSink::drain() {
    const std::lock_guard guard(lock_);
    return std::exchange(pcm_, {});
}

QString PCMSink::levelSummary() const {
    const std::lock_guard guard(lock_);
    if (levels_.empty()) {
        return QStringLiteral("no levels");
    }
    auto sorted = levels_;
    std::sort(sorted.begin(), sorted.end());
    const auto quiet = std::lower_bound(sorted.begin(), sorted.end(), quietBound) - sorted.begin();
    const double quietShare = static_cast<double>(quiet) / static_cast<double>(sorted.size());
    return QString::asprintf("levels p5 %.3f p10 %.3f p25 %.3f p50 %.3f, %.0f%% below %.2f",
                             pointOf(sorted, 0.05), pointOf(sorted, 0.1), pointOf(sorted, 0.25),
                             pointOf(sorted, 0.5), quietShare * 100, quietBound);
}

std::optional<Instant> PCMSink::quietSince() const {
    const std::lock_guard guard(lock_);
    return quietSince_;
}

std::size_t PCMSink::levelCount() const {
    const std::lock_guard guard(lock_);
    return levels_.size();
}

qsizetype PCMSink::pcmSize() const {
    const std::lock_guard guard(lock_);
    return pcm_.size();
}

} // namespace lorvane
