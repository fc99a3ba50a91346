// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/testing/FakePCMConverter.h"

#include <algorithm>
#include <cmath>

namespace lorvane {

FakePCMConverter::FakePCMConverter(const InputFormat& format, std::shared_ptr<FakeAudioSystem> system,
                                   std::shared_ptr<std::vector<std::size_t>> capacities)
    : format_(format), system_(std::move(system)), capacities_(std::move(capacities)) {}

std::optional<QByteArray> FakePCMConverter::convert(const InputBuffer& buffer, std::size_t capacity) {
    capacities_->push_back(capacity);
    if (system_->conversionFails) {
        return std::nullopt;
    }
    QByteArray pcm;
    const std::uint64_t end = heard_ + buffer.frames;
    for (;; ++given_) {
        const auto wanted =
            static_cast<std::uint64_t>(static_cast<double>(given_) * format_.sampleRate / captureRate);
        if (wanted >= end) {
            break;
        }
        const float sample = std::clamp(buffer.samples[(wanted - heard_) * buffer.channels], -1.0F, 1.0F);
        const auto value = static_cast<qint16>(std::lround(sample * 32767.0F));
        pcm.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
    heard_ = end;
    return pcm;
}

} // namespace lorvane
