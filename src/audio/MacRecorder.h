// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/AudioEngine.h"
#include "audio/MacAudioDevices.h"
#include "audio/PCMSink.h"
#include "audio/Take.h"
#include "base/Foundation.h"
#include "base/Result.h"
#include "base/Signal.h"

#include <QByteArray>

#include <functional>
#include <memory>
#include <optional>

namespace lorvane {

/// The microphone as one run of 16 kHz mono signed 16-bit PCM (host order) for the length of a take. Main
/// thread.
class MacRecorder {
 public:
    using Take = lorvane::Take;

    struct StartFailure {
        enum class Kind { engine, denied, noInput };
        Kind kind = Kind::engine;
        /// The system's own words; only with `engine`.
        QString description = {};
        friend bool operator==(const StartFailure&, const StartFailure&) = default;
    };

    MacRecorder(const Foundation& foundation, AudioEngineFactory& engines, InputDevices& devices);
    ~MacRecorder();

    /// Succeeds at once, changing nothing, when already recording.
    [[nodiscard]] Result<void, StartFailure> start();
    /// The take's whole PCM, which may be empty; nothing when not recording.
    [[nodiscard]] std::optional<QByteArray> stop();
    /// Throws the PCM away.
    void cancel();

    /// Also while it is deaf, after a device change that could not be followed.
    [[nodiscard]] bool isRecording() const { return isRecording_; }
    /// When the running or last take began; the clock's beginning before the first.
    [[nodiscard]] Instant startedAt() const { return startedAt_; }
    /// 0.0 to 1.0, refreshed every 0.05 s while recording; for display.
    [[nodiscard]] double level() const { return level_; }
    /// Told when the level has changed.
    [[nodiscard]] Handle subscribeLevel(std::function<void(const double& level)> observer);

    /// Kept for parts of a take; capture does not cut takes, so it is never called.
    std::function<void(QByteArray pcm)> onPart;

 private:
    [[nodiscard]] Result<void, StartFailure> openInput();
    void applyChosenInput();
    void followDeviceChange();
    void closeInput();
    void setLevel(double level);

    const Foundation foundation_;
    AudioEngineFactory& engines_;
    InputDevices& devices_;
    PCMSink sink_;
    std::unique_ptr<AudioEngine> engine_;
    Handle configObserver_;
    Handle levelTimer_;
    Signal<double> levelChanged_;
    bool isRecording_ = false;
    Instant startedAt_{};
    double level_ = 0;
};

/// The user's words for a failure to start.
[[nodiscard]] QString errorDescription(const MacRecorder::StartFailure& failure, const Localisation& words);

} // namespace lorvane
