// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/av/SwrPCMConverter.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libswresample/swresample.h>
}

#include <cmath>
#include <vector>

namespace lorvane {

namespace {
constexpr unsigned mostChannels = 32; // of the sound server
constexpr double mostRate = 768'000;
} // namespace

void SwrPCMConverter::Free::operator()(SwrContext* context) const { swr_free(&context); }

SwrPCMConverter::SwrPCMConverter(std::unique_ptr<SwrContext, Free> context, unsigned channels)
    : context_(std::move(context)), channels_(channels) {}

std::unique_ptr<PCMConverter> SwrPCMConverter::make(const InputFormat& format) {
    if (!(format.sampleRate >= 1 && format.sampleRate <= mostRate) || format.channels == 0 ||
        format.channels > mostChannels) {
        return nullptr;
    }
    // A microphone's channels are no loudspeaker positions, so they get no layout but their number.
    const int channels = static_cast<int>(format.channels);
    AVChannelLayout input{AV_CHANNEL_ORDER_UNSPEC, channels, {0}, nullptr};
    AVChannelLayout output = AV_CHANNEL_LAYOUT_MONO;
    SwrContext* made = nullptr;
    const int rate = static_cast<int>(std::lround(format.sampleRate));
    if (swr_alloc_set_opts2(&made, &output, AV_SAMPLE_FMT_S16, static_cast<int>(captureRate), &input,
                            AV_SAMPLE_FMT_FLT, rate, 0, nullptr) < 0) {
        return nullptr;
    }
    std::unique_ptr<SwrContext, Free> context(made);
    const std::vector<double> equalWeights(format.channels, 1.0 / format.channels);
    if (swr_set_matrix(context.get(), equalWeights.data(), channels) < 0 || swr_init(context.get()) < 0) {
        return nullptr;
    }
    return std::unique_ptr<PCMConverter>(new SwrPCMConverter(std::move(context), format.channels));
}

std::optional<QByteArray> SwrPCMConverter::convert(const InputBuffer& buffer, std::size_t capacity) {
    if (buffer.channels != channels_) {
        return std::nullopt;
    }
    QByteArray pcm(static_cast<qsizetype>(capacity) * captureBytesPerFrame, Qt::Uninitialized);
    auto* output = reinterpret_cast<std::uint8_t*>(pcm.data());
    const auto* input = reinterpret_cast<const std::uint8_t*>(buffer.samples);
    const int frames = swr_convert(context_.get(), &output, static_cast<int>(capacity), &input,
                                   static_cast<int>(buffer.frames));
    if (frames < 0) {
        return std::nullopt;
    }
    pcm.truncate(frames * captureBytesPerFrame);
    return pcm;
}

} // namespace lorvane
