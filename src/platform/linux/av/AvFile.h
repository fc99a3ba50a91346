// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/TakeCodec.h"
#include "platform/linux/av/AvError.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <cstdint>
#include <memory>

namespace lorvane {

namespace detail {
template <auto release>
struct AvRelease {
    template <typename T>
    void operator()(T* object) const {
        release(&object);
    }
};
struct AvFormatClose {
    void operator()(AVFormatContext* format) const {
        avio_closep(&format->pb);
        avformat_free_context(format);
    }
};
} // namespace detail

/// An audio file under way. Every operation throws AvError.
class AvFile {
 public:
    AvFile(const TakeSettings& settings, const QByteArray& path);

    /// Interleaved samples.
    void write(const std::int16_t* samples, std::size_t count);
    /// Ends the stream; a file that was not closed is not complete.
    void close();

 private:
    void openCodec(const TakeSettings& settings);
    void openContainer(const QByteArray& path);
    void fillFrame(const std::int16_t* samples, int frames);
    void encode(const AVFrame* frame);

    std::unique_ptr<AVFormatContext, detail::AvFormatClose> format_;
    std::unique_ptr<AVCodecContext, detail::AvRelease<avcodec_free_context>> codec_;
    std::unique_ptr<AVFrame, detail::AvRelease<av_frame_free>> frame_;
    std::unique_ptr<AVPacket, detail::AvRelease<av_packet_free>> packet_;
    AVStream* stream_ = nullptr;
    std::int64_t written_ = 0;
};

} // namespace lorvane
