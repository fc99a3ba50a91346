// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/pulse/PulseCapture.h"

#include "platform/linux/pulse/PulseStream.h"

#include <algorithm>
#include <pulse/error.h>

namespace lorvane {

namespace {

// The server sets the device up for this much delay, which is what an utterance can lose at its end.
constexpr pa_usec_t fragmentMicroseconds = 10'000;
// Of a server that is there but does not answer.
constexpr std::chrono::milliseconds patience{1'000};

} // namespace

EngineFailure engineFailure(int error) {
    return {error == PA_ERR_ACCESS, QString::fromUtf8(pa_strerror(error))};
}

PulseCapture::PulseCapture(PulseConnection& connection, const PulseSource& source, unsigned frames,
                           AudioEngine::Tap tap, EventHandler onEvent)
    : connection_(connection), mostFrames_(frames), tap_(std::move(tap)), onEvent_(std::move(onEvent)),
      channels_(source.format.channels) {
    const PulseConnection::Lock lock(connection_);
    if (auto* const context = connection_.readyContext()) {
        open(context, source);
    } else {
        settle(State::failed, engineFailure(PA_ERR_CONNECTIONTERMINATED));
    }
}

PulseCapture::~PulseCapture() {
    if (stream_ == nullptr) {
        return;
    }
    const PulseConnection::Lock lock(connection_);
    endStream(stream_);
}

void PulseCapture::open(pa_context* context, const PulseSource& source) {
    const pa_sample_spec format{PA_SAMPLE_FLOAT32NE, source.format.rate, source.format.channels};
    stream_ = pa_stream_new(context, "Dictation", &format, &source.channels);
    if (stream_ == nullptr) {
        settle(State::failed, engineFailure(pa_context_errno(context)));
        return;
    }
    pa_stream_set_state_callback(
        stream_, [](pa_stream*, void* capture) { static_cast<PulseCapture*>(capture)->streamChanged(); },
        this);
    pa_stream_set_read_callback(
        stream_, [](pa_stream*, std::size_t, void* capture) { static_cast<PulseCapture*>(capture)->read(); },
        this);
    pa_stream_set_moved_callback(
        stream_, [](pa_stream*, void* capture) { static_cast<PulseCapture*>(capture)->onEvent_(); }, this);
    constexpr auto automatic = static_cast<std::uint32_t>(-1);
    pa_buffer_attr buffers{automatic, automatic, automatic, automatic, automatic};
    buffers.fragsize = static_cast<std::uint32_t>(pa_usec_to_bytes(fragmentMicroseconds, &format));
    if (pa_stream_connect_record(stream_, source.name.toUtf8().constData(), &buffers,
                                 PA_STREAM_ADJUST_LATENCY) < 0) {
        settle(State::failed, engineFailure(pa_context_errno(context)));
    }
}

Result<void, EngineFailure> PulseCapture::awaitStart() {
    std::unique_lock guard(mutex_);
    if (!settled_.wait_for(guard, patience, [this] { return state_ != State::opening; })) {
        return failure(engineFailure(PA_ERR_TIMEOUT));
    }
    if (state_ == State::failed) {
        return failure(failure_);
    }
    return {};
}

void PulseCapture::streamChanged() {
    switch (pa_stream_get_state(stream_)) {
    case PA_STREAM_READY:
        settle(State::running);
        break;
    case PA_STREAM_FAILED:
    case PA_STREAM_TERMINATED:
        settle(State::failed, engineFailure(pa_context_errno(pa_stream_get_context(stream_))));
        break;
    default:
        break;
    }
}

void PulseCapture::settle(State state, const EngineFailure& failure) {
    bool wasRunning = false;
    {
        const std::lock_guard guard(mutex_);
        wasRunning = state_ == State::running;
        state_ = state;
        failure_ = failure;
    }
    settled_.notify_all();
    if (wasRunning && state == State::failed) {
        onEvent_();
    }
}

void PulseCapture::read() {
    while (pa_stream_readable_size(stream_) > 0) {
        const void* data = nullptr;
        std::size_t bytes = 0;
        if (pa_stream_peek(stream_, &data, &bytes) < 0 || bytes == 0) {
            return;
        }
        handOver(data, bytes);
        pa_stream_drop(stream_);
    }
}

// No data with a length: a gap, which counts as silence so that time stays true.
void PulseCapture::handOver(const void* data, std::size_t bytes) {
    std::size_t frames = bytes / (sizeof(float) * channels_);
    const auto* samples = static_cast<const float*>(data);
    if (samples == nullptr) {
        silence_.assign(frames * channels_, 0.0F);
        samples = silence_.data();
    }
    while (frames > 0) {
        const std::size_t count = std::min(frames, mostFrames_);
        tap_({samples, count, channels_});
        samples += count * channels_;
        frames -= count;
    }
}

} // namespace lorvane
