// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/MacRecorder.h"

#include "audio/CaptureTap.h"
#include "base/PreferenceCatalogue.h"

namespace lorvane {

namespace {

constexpr unsigned tapFrames = 4096;
constexpr Duration levelPeriod = std::chrono::milliseconds(50);

using StartFailure = MacRecorder::StartFailure;

StartFailure startFailure(const EngineFailure& failure) {
    return failure.forbidden ? StartFailure{StartFailure::Kind::denied}
                             : StartFailure{StartFailure::Kind::engine, failure.description};
}

} // namespace

MacRecorder::MacRecorder(const Foundation& foundation, AudioEngineFactory& engines, InputDevices& devices)
    : foundation_(foundation), engines_(engines), devices_(devices), sink_(foundation.clock),
      engine_(engines.makeEngine()) {}

MacRecorder::~MacRecorder() = default;

Result<void, StartFailure> MacRecorder::start() {
    if (isRecording_) {
        return {};
    }
    if (engines_.authorisation() != AudioAuthorisation::authorised) {
        return failure(StartFailure{StartFailure::Kind::denied});
    }
    sink_.reset();
    // A fresh engine sees a device that was chosen or plugged in since the last take.
    engine_ = engines_.makeEngine();
    if (auto opened = openInput(); !opened) {
        return opened;
    }
    isRecording_ = true;
    startedAt_ = foundation_.clock.now();
    configObserver_ = engine_->subscribeConfigurationChange([this] { followDeviceChange(); });
    levelTimer_ = foundation_.clock.every(levelPeriod, [this] { setLevel(sink_.lastLevel()); });
    return {};
}

std::optional<QByteArray> MacRecorder::stop() {
    if (!isRecording_) {
        return std::nullopt;
    }
    foundation_.log.diagLog(QStringLiteral("[part] take ended — ") + sink_.levelSummary());
    closeInput();
    return sink_.drain();
}

void MacRecorder::cancel() {
    if (!isRecording_) {
        return;
    }
    closeInput();
    sink_.reset();
}

Handle MacRecorder::subscribeLevel(std::function<void(const double& level)> observer) {
    return levelChanged_.subscribe(std::move(observer));
}

Result<void, StartFailure> MacRecorder::openInput() {
    applyChosenInput();
    const InputFormat format = engine_->inputFormat();
    if (format.sampleRate <= 0 || format.channels == 0) {
        return failure(StartFailure{StartFailure::Kind::noInput});
    }
    auto converter = engines_.makeConverter(format);
    if (!converter) {
        return failure(StartFailure{StartFailure::Kind::engine, QStringLiteral("Audio converter failed")});
    }
    const auto tap = std::make_shared<CaptureTap>(format, std::move(converter), sink_);
    return engine_->start(tapFrames, [tap](const InputBuffer& buffer) { (*tap)(buffer); })
        .map_error(startFailure);
}

// Comes before the format is read, so that the format is that of the chosen device.
void MacRecorder::applyChosenInput() {
    const QString uid = foundation_.preferences.get(preference::inputUID);
    const auto device = MacAudioDevices::deviceID(devices_, uid);
    if (!device) {
        return;
    }
    if (const auto selected = engine_->selectInput(*device); !selected) {
        foundation_.log.consoleLog(QStringLiteral("[tirra-mic] could not select the chosen input: ") +
                                   selected.error());
    }
}

// Once in a take: the observer is not installed again. What was captured before stays, and a take whose new
// device cannot be opened goes on without sound.
void MacRecorder::followDeviceChange() {
    if (!isRecording_) {
        return;
    }
    configObserver_.reset();
    engine_->stop();
    if (const auto opened = openInput(); !opened) {
        foundation_.log.consoleLog(QStringLiteral("[tirra-mic] could not follow the device change: ") +
                                   errorDescription(opened.error(), foundation_.words));
    }
}

void MacRecorder::closeInput() {
    configObserver_.reset();
    engine_->stop();
    isRecording_ = false;
    levelTimer_.reset();
    setLevel(0.0);
}

void MacRecorder::setLevel(double level) {
    if (level != level_) {
        level_ = level;
        levelChanged_.emit(level_);
    }
}

QString errorDescription(const StartFailure& failure, const Localisation& words) {
    switch (failure.kind) {
    case StartFailure::Kind::denied:
        return words.text(QStringLiteral("Microphone access is off"));
    case StartFailure::Kind::noInput:
        return words.text(QStringLiteral("No microphone on the selected input"));
    case StartFailure::Kind::engine:
        break;
    }
    return failure.description;
}

} // namespace lorvane
