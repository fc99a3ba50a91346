// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/testing/FakeAudioEngine.h"

#include "audio/testing/FakePCMConverter.h"

#include <algorithm>
#include <utility>

namespace lorvane {

namespace {

const InputFormat* formatOf(const FakeAudioSystem& system, AudioDeviceID device) {
    const auto found = std::find_if(system.devices.begin(), system.devices.end(),
                                    [&](const auto& known) { return known.first == device; });
    return found == system.devices.end() ? nullptr : &found->second;
}

} // namespace

FakeAudioEngine::FakeAudioEngine(std::shared_ptr<FakeAudioSystem> system) : system_(std::move(system)) {}
FakeAudioEngine::~FakeAudioEngine() = default;

Result<void, QString> FakeAudioEngine::selectInput(AudioDeviceID device) {
    if (system_->selectFailure) {
        return failure(*system_->selectFailure);
    }
    if (formatOf(*system_, device) == nullptr) {
        return failure(QStringLiteral("No such device"));
    }
    selected_ = device;
    return {};
}

InputFormat FakeAudioEngine::inputFormat() {
    const InputFormat* const chosen = selected_ ? formatOf(*system_, *selected_) : nullptr;
    return chosen != nullptr ? *chosen : system_->format;
}

Result<void, EngineFailure> FakeAudioEngine::start(unsigned frames, Tap tap) {
    ++starts_;
    frames_ = frames;
    running_ = inputFormat();
    if (system_->startFailure) {
        return failure(*system_->startFailure);
    }
    tap_ = std::move(tap);
    return {};
}

void FakeAudioEngine::stop() {
    ++stops_;
    tap_ = nullptr;
}

Handle FakeAudioEngine::subscribeConfigurationChange(std::function<void()> changed) {
    return configurationChanged_.subscribe(std::move(changed));
}

void FakeAudioEngine::deliver(const std::vector<float>& samples) {
    if (tap_) {
        tap_({samples.data(), samples.size() / running_.channels, running_.channels});
    }
}

void FakeAudioEngine::deliver(float value, std::size_t frames) {
    if (tap_) {
        deliver(std::vector<float>(frames * running_.channels, value));
    }
}

std::unique_ptr<AudioEngine> FakeAudioEngineFactory::makeEngine() {
    ++enginesMade_;
    auto engine = std::make_unique<FakeAudioEngine>(system_);
    newest_ = engine.get();
    return engine;
}

std::unique_ptr<PCMConverter> FakeAudioEngineFactory::makeConverter(const InputFormat& format) {
    if (system_->converterCannotBeMade) {
        return nullptr;
    }
    ++convertersMade_;
    return std::make_unique<FakePCMConverter>(format, system_, capacities_);
}

} // namespace lorvane
