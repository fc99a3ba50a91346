// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/AudioEngine.h"
#include "platform/linux/pulse/PulseConnection.h"

#include <condition_variable>
#include <mutex>
#include <optional>
#include <pulse/stream.h>
#include <vector>

namespace lorvane {

/// One record stream, from its making to its end. Main thread; the tap and `onEvent` run on the server's
/// thread.
class PulseCapture {
 public:
    /// The stream was ended by the server, or now hears another source.
    using EventHandler = std::function<void()>;

    PulseCapture(PulseConnection& connection, const PulseSource& source, unsigned frames,
                 AudioEngine::Tap tap, EventHandler onEvent);
    /// When it returns the tap is not running and is never called again.
    ~PulseCapture();
    PulseCapture(const PulseCapture&) = delete;
    PulseCapture& operator=(const PulseCapture&) = delete;

    /// Waits until the stream runs or has failed.
    [[nodiscard]] Result<void, EngineFailure> awaitStart();

 private:
    enum class State { opening, running, failed };

    void open(pa_context* context, const PulseSource& source);
    void streamChanged();
    void settle(State state, const EngineFailure& failure = {});
    void read();
    void handOver(const void* data, std::size_t bytes);

    PulseConnection& connection_;
    std::size_t mostFrames_;
    AudioEngine::Tap tap_;
    EventHandler onEvent_;
    unsigned channels_;
    pa_stream* stream_ = nullptr;
    std::vector<float> silence_;

    std::mutex mutex_;
    std::condition_variable settled_;
    State state_ = State::opening;
    EngineFailure failure_;
};

/// What an error number of the server means for a capture.
[[nodiscard]] EngineFailure engineFailure(int error);

} // namespace lorvane
