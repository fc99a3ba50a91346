// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/pulse/PulseAudioEngine.h"

#include <pulse/def.h>
#include <pulse/error.h>

namespace lorvane {

namespace {
// For a connection that is under way when the user starts to speak.
constexpr std::chrono::milliseconds patience{300};
} // namespace

PulseAudioEngine::PulseAudioEngine(PulseConnection& connection) : connection_(connection) {}

Result<void, QString> PulseAudioEngine::selectInput(AudioDeviceID device) {
    if (findSource(connection_.inputs(), device) == nullptr) {
        return failure(QString::fromUtf8(pa_strerror(PA_ERR_NOENTITY)));
    }
    selected_ = device;
    return {};
}

InputFormat PulseAudioEngine::inputFormat() {
    connection_.awaitReady(patience);
    resolveInput();
    return source_ ? InputFormat{static_cast<double>(source_->format.rate), source_->format.channels}
                   : InputFormat{};
}

void PulseAudioEngine::resolveInput() {
    const PulseInputs inputs = connection_.inputs();
    const PulseSource* source = selected_ ? findSource(inputs, *selected_) : nullptr;
    if (source == nullptr) {
        selected_.reset();
        source = defaultSource(inputs);
    }
    source_ = source != nullptr ? std::optional(*source) : std::nullopt;
}

Result<void, EngineFailure> PulseAudioEngine::start(unsigned frames, Tap tap) {
    stop();
    if (!source_) {
        return failure(engineFailure(PA_ERR_NOENTITY));
    }
    mainThread_ = std::make_unique<QObject>();
    capture_ = std::make_unique<PulseCapture>(
        connection_, *source_, frames, std::move(tap), [this, receiver = mainThread_.get()] {
            QMetaObject::invokeMethod(
                receiver, [this] { inputChanged(); }, Qt::QueuedConnection);
        });
    auto started = capture_->awaitStart();
    if (!started) {
        stop();
        return started;
    }
    inputsWatch_ = connection_.subscribe([this] { defaultMayHaveChanged(); });
    return {};
}

void PulseAudioEngine::stop() {
    inputsWatch_.reset();
    fresh_.reset();
    capture_.reset();
    mainThread_.reset();
}

Handle PulseAudioEngine::subscribeConfigurationChange(std::function<void()> changed) {
    return configurationChanged_.subscribe(std::move(changed));
}

// Told only when the server has said what is there now: whoever follows then finds a device that works, or
// learns that there is none.
void PulseAudioEngine::inputChanged() {
    fresh_ = connection_.onceFresh([this] { configurationChanged_.emit(); });
}

void PulseAudioEngine::defaultMayHaveChanged() {
    if (selected_ || connection_.state() != PulseConnection::State::ready) {
        return;
    }
    const PulseInputs inputs = connection_.inputs();
    const PulseSource* const now = defaultSource(inputs);
    if (now != nullptr && now->index != source_->index) {
        configurationChanged_.emit();
    }
}

} // namespace lorvane
