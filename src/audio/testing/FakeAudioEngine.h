// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/AudioEngine.h"
#include "base/Signal.h"

#include <optional>
#include <vector>

namespace lorvane {

/// What the fake system is like; a test changes it at any time.
struct FakeAudioSystem {
    AudioAuthorisation authorisation = AudioAuthorisation::authorised;
    /// The default input.
    InputFormat format{48'000.0, 1};
    /// Formats of the devices that can be selected.
    std::vector<std::pair<AudioDeviceID, InputFormat>> devices;
    std::optional<QString> selectFailure;
    std::optional<EngineFailure> startFailure;
    bool converterCannotBeMade = false;
    /// Conversions fail while this is set.
    bool conversionFails = false;
};

/// An engine that captures what a test hands to `deliver`.
class FakeAudioEngine final : public AudioEngine {
 public:
    explicit FakeAudioEngine(std::shared_ptr<FakeAudioSystem> system);
    ~FakeAudioEngine() override;

    [[nodiscard]] Result<void, QString> selectInput(AudioDeviceID device) override;
    [[nodiscard]] InputFormat inputFormat() override;
    [[nodiscard]] Result<void, EngineFailure> start(unsigned frames, Tap tap) override;
    void stop() override;
    [[nodiscard]] Handle subscribeConfigurationChange(std::function<void()> changed) override;

    [[nodiscard]] bool isRunning() const { return static_cast<bool>(tap_); }
    [[nodiscard]] std::optional<AudioDeviceID> selected() const { return selected_; }
    [[nodiscard]] unsigned requestedFrames() const { return frames_; }
    [[nodiscard]] int starts() const { return starts_; }
    [[nodiscard]] int stops() const { return stops_; }

    /// Interleaved samples of the input's channels, as the sound card would give them. Nobody hears it while
    /// the engine is stopped.
    void deliver(const std::vector<float>& samples);
    /// `frames` of one value in every channel.
    void deliver(float value, std::size_t frames);
    void changeConfiguration() { configurationChanged_.emit(); }

 private:
    std::shared_ptr<FakeAudioSystem> system_;
    std::optional<AudioDeviceID> selected_;
    InputFormat running_;
    Tap tap_;
    unsigned frames_ = 0;
    int starts_ = 0;
    int stops_ = 0;
    Signal<> configurationChanged_;
};

/// Hands out fakes and keeps the newest at hand.
class FakeAudioEngineFactory final : public AudioEngineFactory {
 public:
    [[nodiscard]] AudioAuthorisation authorisation() const override { return system_->authorisation; }
    [[nodiscard]] std::unique_ptr<AudioEngine> makeEngine() override;
    [[nodiscard]] std::unique_ptr<PCMConverter> makeConverter(const InputFormat& format) override;

    [[nodiscard]] FakeAudioSystem& system() { return *system_; }
    /// The newest engine; a recorder has one from its start and replaces it at each of its own.
    [[nodiscard]] FakeAudioEngine& engine() { return *newest_; }
    [[nodiscard]] int enginesMade() const { return enginesMade_; }
    [[nodiscard]] int convertersMade() const { return convertersMade_; }
    /// The capacities that were asked of the converters, in order.
    [[nodiscard]] const std::vector<std::size_t>& capacities() const { return *capacities_; }

 private:
    std::shared_ptr<FakeAudioSystem> system_ = std::make_shared<FakeAudioSystem>();
    std::shared_ptr<std::vector<std::size_t>> capacities_ = std::make_shared<std::vector<std::size_t>>();
    FakeAudioEngine* newest_ = nullptr;
    int enginesMade_ = 0;
    int convertersMade_ = 0;
};

} // namespace lorvane
