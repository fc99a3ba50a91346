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
    const double step = format_.sampleRate / captureRate;
    for (; position_ < static_cast<double>(buffer.frames); position_ += step) {
        const auto frame = static_cast<std::size_t>(position_);
        const float sample = std::clamp(buffer.samples[frame * buffer.channels], -1.0F, 1.0F);
        const auto value = static_cast<qint16>(std::lround(sample * 32767.0F));
        pcm.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
    position_ -= static_cast<double>(buffer.frames);
    return pcm;
}

} // namespace lorvane
