// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/AudioEngine.h"
#include "platform/linux/pulse/PulseCapture.h"

#include <QObject>

#include <optional>

namespace lorvane {

/// Captures through the sound server, each input in its own rate and channels.
class PulseAudioEngine final : public AudioEngine {
 public:
    explicit PulseAudioEngine(PulseConnection& connection);

    [[nodiscard]] Result<void, QString> selectInput(AudioDeviceID device) override;
    [[nodiscard]] InputFormat inputFormat() override;
    [[nodiscard]] Result<void, EngineFailure> start(unsigned frames, Tap tap) override;
    void stop() override;
    [[nodiscard]] Handle subscribeConfigurationChange(std::function<void()> changed) override;

 private:
    void resolveInput();
    void inputChanged();
    void defaultMayHaveChanged();

    PulseConnection& connection_;
    std::optional<AudioDeviceID> selected_;
    /// What `inputFormat` found; what is captured from.
    std::optional<PulseSource> source_;
    Signal<> configurationChanged_;
    Handle inputsWatch_;
    Handle fresh_;
    std::unique_ptr<PulseCapture> capture_;
    // Posts of this capture's events end with it.
    std::unique_ptr<QObject> mainThread_;
};

} // namespace lorvane
