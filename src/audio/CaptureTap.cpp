// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/CaptureTap.h"

#include <algorithm>
#include <cmath>

namespace lorvane {

namespace {
constexpr std::size_t spareFrames = 64;
constexpr double levelGain = 18.0;
} // namespace

void CaptureTap::operator()(const InputBuffer& buffer) {
    const double expected = captureRate / format_.sampleRate * static_cast<double>(buffer.frames);
    const auto capacity = static_cast<std::size_t>(expected) + spareFrames;
    const auto pcm = converter_->convert(buffer, capacity);
    if (!pcm || pcm->isEmpty()) {
        return;
    }
    sink_.append(*pcm, levelOf(buffer));
}

double levelOf(const InputBuffer& buffer) {
    if (buffer.samples == nullptr || buffer.frames == 0 || buffer.channels == 0) {
        return 0.0;
    }
    float sum = 0.0F;
    for (std::size_t frame = 0; frame < buffer.frames; ++frame) {
        const float sample = buffer.samples[frame * buffer.channels];
        sum += sample * sample;
    }
    const float rms = std::sqrt(sum / static_cast<float>(buffer.frames));
    return std::min(1.0, static_cast<double>(rms) * levelGain);
}

} // namespace lorvane
