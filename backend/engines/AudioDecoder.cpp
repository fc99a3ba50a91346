// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/AudioDecoder.h"

#include "engines/Engine.h"
#include "engines/MemoryFile.h"

#include <algorithm>
#include <ctime>
#include <memory>
#include <mutex>
#include <optional>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/mem.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

namespace lorvane::backend {

namespace {

// What a microphone may have. A header may claim anything, and the resampler would try.
constexpr int lowestRate = 4'000;
constexpr int highestRate = 384'000;
constexpr int mostChannels = 8;
// An index may announce millions of samples in a few bytes. That of ten hours takes 40 MB.
constexpr std::size_t memoryStep = std::size_t(1) << 18; // samples that are asked for at once: 16 s
constexpr std::size_t largestAllocation = std::size_t(64) << 20;

struct FreeFormat {
    void operator()(AVFormatContext* it) const { avformat_close_input(&it); }
};
struct FreeCodec {
    void operator()(AVCodecContext* it) const { avcodec_free_context(&it); }
};
struct FreePacket {
    void operator()(AVPacket* it) const { av_packet_free(&it); }
};
struct FreeFrame {
    void operator()(AVFrame* it) const { av_frame_free(&it); }
};
struct FreeResampler {
    void operator()(SwrContext* it) const { swr_free(&it); }
};

using Format = std::unique_ptr<AVFormatContext, FreeFormat>;
using Codec = std::unique_ptr<AVCodecContext, FreeCodec>;
using Packet = std::unique_ptr<AVPacket, FreePacket>;
using Frame = std::unique_ptr<AVFrame, FreeFrame>;
using Resampler = std::unique_ptr<SwrContext, FreeResampler>;

// Of this thread: how busy the machine is otherwise does not count.
double processorSeconds() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

// Whether decoding may go on.
class Patience {
 public:
    Patience(const std::vector<std::int16_t>& out, std::stop_token stop)
        : out_(out), stop_(std::move(stop)) {}

    bool over() const { return stop_.stop_requested() || spent(); }
    AudioError reason() const {
        return stop_.stop_requested() ? AudioError::stopped : AudioError::unreadable;
    }
    static int interrupt(void* self) { return static_cast<const Patience*>(self)->over() ? 1 : 0; }

 private:
    bool spent() const {
        const auto sound = static_cast<double>(out_.size()) / sampleRate;
        return processorSeconds() - began_ > decodingTime + decodingTimeOfASecond * sound;
    }

    const std::vector<std::int16_t>& out_;
    const std::stop_token stop_;
    const double began_ = processorSeconds();
};

Format openFormat(AVIOContext* io, Patience& patience) {
    AVFormatContext* raw = avformat_alloc_context();
    if (!raw)
        return nullptr;
    raw->pb = io;
    raw->flags |= AVFMT_FLAG_CUSTOM_IO;
    raw->interrupt_callback = {&Patience::interrupt, &patience};
    AVDictionary* options = nullptr;
    // Nothing but the take formats, and never another file that the bytes may point to.
    av_dict_set(&options, "format_whitelist", "mov,mp4,m4a,3gp,3g2,mj2,wav,flac", 0);
    av_dict_set(&options, "codec_whitelist", "aac,alac,flac,pcm_s16le,pcm_s24le,pcm_s32le,pcm_u8,pcm_f32le",
                0);
    av_dict_set(&options, "protocol_whitelist", "none", 0);
    av_dict_set(&options, "max_streams", "4", 0); // the sound, and a picture or the like
    const int opened = avformat_open_input(&raw, "", nullptr, &options); // frees raw when it fails
    av_dict_free(&options);
    if (opened < 0)
        return nullptr;
    Format format(raw);
    format->probesize = 1 << 20;
    if (avformat_find_stream_info(format.get(), nullptr) < 0)
        return nullptr;
    return format;
}

Codec openCodec(const AVStream& stream) {
    const AVCodec* decoder = avcodec_find_decoder(stream.codecpar->codec_id);
    if (!decoder)
        return nullptr;
    Codec codec(avcodec_alloc_context3(decoder));
    if (!codec || avcodec_parameters_to_context(codec.get(), stream.codecpar) < 0)
        return nullptr;
    codec->thread_count = 1;
    if (avcodec_open2(codec.get(), decoder, nullptr) < 0)
        return nullptr;
    return codec;
}

// Follows the frames, so that a file whose announced layout is wrong, or changes, still comes out right.
class ToSpeechSamples {
 public:
    ToSpeechSamples(std::vector<std::int16_t>& out, std::size_t bound, ByteBudget::Share* memory)
        : out_(out), bound_(bound), memory_(memory) {
        // Never moved: what is not used of it is no memory but addresses.
        out_.reserve(bound + memoryStep);
    }

    bool add(const AVFrame& frame) {
        if (frame.sample_rate < lowestRate || frame.sample_rate > highestRate ||
            frame.ch_layout.nb_channels <= 0 || frame.ch_layout.nb_channels > mostChannels)
            return false;
        if (!matches(frame) && !open(frame))
            return false;
        return convert(const_cast<const std::uint8_t**>(frame.extended_data), frame.nb_samples);
    }
    bool finish() { return !resampler_ || convert(nullptr, 0); }
    bool full() const { return out_.size() > bound_; }
    bool outOfMemory() const { return outOfMemory_; }

 private:
    bool matches(const AVFrame& frame) const {
        return resampler_ && rate_ == frame.sample_rate && format_ == frame.format &&
               channels_ == frame.ch_layout.nb_channels;
    }
    bool open(const AVFrame& frame) {
        if (!finish())
            return false;
        AVChannelLayout from{};
        // A layout without an order (raw WAV) cannot be mixed down before it is given the usual one.
        if (frame.ch_layout.order == AV_CHANNEL_ORDER_UNSPEC)
            av_channel_layout_default(&from, frame.ch_layout.nb_channels);
        else
            av_channel_layout_copy(&from, &frame.ch_layout);
        AVChannelLayout mono = AV_CHANNEL_LAYOUT_MONO;
        SwrContext* raw = nullptr;
        const int made =
            swr_alloc_set_opts2(&raw, &mono, AV_SAMPLE_FMT_S16, sampleRate, &from,
                                static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0, nullptr);
        av_channel_layout_uninit(&from);
        resampler_.reset(raw);
        rate_ = frame.sample_rate;
        format_ = frame.format;
        channels_ = frame.ch_layout.nb_channels;
        return made >= 0 && swr_init(resampler_.get()) >= 0;
    }
    bool convert(const std::uint8_t** in, int count) {
        const int room = swr_get_out_samples(resampler_.get(), count);
        if (room < 0)
            return false;
        const auto before = out_.size();
        if (!grow(before + static_cast<std::size_t>(room)))
            return false;
        out_.resize(before + static_cast<std::size_t>(room));
        auto* to = reinterpret_cast<std::uint8_t*>(out_.data() + before);
        const int made = swr_convert(resampler_.get(), &to, room, in, count);
        out_.resize(before + static_cast<std::size_t>(std::max(made, 0)));
        return made >= 0;
    }

    bool grow(std::size_t samples) {
        for (; memory_ && taken_ < samples && !outOfMemory_; taken_ += memoryStep)
            outOfMemory_ = !memory_->grow(memoryStep * sizeof(std::int16_t));
        return !outOfMemory_;
    }

    std::vector<std::int16_t>& out_;
    const std::size_t bound_;
    ByteBudget::Share* const memory_;
    std::size_t taken_ = 0; // samples of it
    bool outOfMemory_ = false;
    Resampler resampler_;
    int rate_ = 0;
    int format_ = -1;
    int channels_ = 0;
};

// Takes every frame that the codec has ready. False when the sound cannot be converted.
bool drainFrames(AVCodecContext& codec, AVFrame& frame, ToSpeechSamples& samples) {
    while (!samples.full() && avcodec_receive_frame(&codec, &frame) >= 0)
        if (!samples.add(frame))
            return false;
    return true;
}

std::optional<AudioError> decodeStream(AVFormatContext& format, int stream, AVCodecContext& codec,
                                       ToSpeechSamples& samples, const Patience& patience) {
    const Packet packet(av_packet_alloc());
    const Frame frame(av_frame_alloc());
    if (!packet || !frame)
        return AudioError::unreadable;
    bool good = true;
    while (good && !samples.full() && av_read_frame(&format, packet.get()) >= 0) {
        if (patience.over())
            return patience.reason();
        // A damaged packet costs its own sound and no more.
        if (packet->stream_index == stream && avcodec_send_packet(&codec, packet.get()) >= 0)
            good = drainFrames(codec, *frame, samples);
        av_packet_unref(packet.get());
    }
    if (good && !samples.full() && avcodec_send_packet(&codec, nullptr) >= 0)
        good = drainFrames(codec, *frame, samples) && samples.finish();
    if (samples.full())
        return AudioError::tooLong;
    if (samples.outOfMemory())
        return AudioError::noMemory;
    return good ? std::nullopt : std::optional(AudioError::unreadable);
}

} // namespace

DecodedAudio decodeAudio(std::string_view file, double maxSeconds, const std::stop_token& stop,
                         ByteBudget::Share* memory) {
    static std::once_flag quiet;
    std::call_once(quiet, [] {
        av_log_set_level(AV_LOG_QUIET); // its words on damaged files are not ours
        av_max_alloc(largestAllocation);
    });
    std::vector<std::int16_t> out;
    if (file.empty())
        return out;
    Patience patience(out, stop);
    const MemoryFile bytes(file);
    const Format format = openFormat(bytes.context(), patience);
    if (!format)
        return patience.reason();
    const int stream = av_find_best_stream(format.get(), AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (stream < 0)
        return AudioError::unreadable;
    const Codec codec = openCodec(*format->streams[stream]);
    if (!codec)
        return AudioError::unreadable;
    ToSpeechSamples samples(out, static_cast<std::size_t>(maxSeconds * sampleRate), memory);
    if (const auto error = decodeStream(*format, stream, *codec, samples, patience))
        return *error;
    return out;
}

} // namespace lorvane::backend
