// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/VirtualMicrophone.h"

#include "support/Wait.h"

#include <csignal>
#include <stdexcept>

#include <unistd.h>

namespace lorvane {

namespace {

const QString virtualMicrophone = QStringLiteral("virtual_mic");
const QString sampleFolder = QStringLiteral("/usr/share/pocketsphinx/test/data/librivox/");

QString pactl(const QStringList& arguments) {
    const auto result = runTool(QStringLiteral("pactl"), arguments);
    if (result.status != 0)
        throw std::runtime_error("pactl " + arguments.join(u' ').toStdString() + ": " +
                                 result.errors.toStdString());
    return QString::fromUtf8(result.output).trimmed();
}

bool serverAnswers() { return runTool(QStringLiteral("pactl"), {QStringLiteral("info")}).status == 0; }

} // namespace

Playback::Playback(const QString& file, const QString& sink) {
    process_.setProcessChannelMode(QProcess::MergedChannels);
    process_.setChildProcessModifier([] { ::setpgid(0, 0); });
    process_.start(QStringLiteral(LORVANE_PLAY_TOOL), {file, sink});
    if (!process_.waitForStarted())
        throw std::runtime_error("cannot play " + file.toStdString());
}

Playback::~Playback() {
    if (process_.state() == QProcess::NotRunning)
        return;
    // The tool and the players that it has started.
    ::kill(-static_cast<pid_t>(process_.processId()), SIGTERM);
    process_.waitForFinished();
}

void Playback::wait() {
    constexpr std::chrono::minutes longestSample{10};
    if (!waitUntil([&] { return process_.state() == QProcess::NotRunning; }, longestSample) ||
        process_.exitCode() != 0)
        throw std::runtime_error("the sound was not played: " + process_.readAll().toStdString());
}

PluggedMicrophone::PluggedMicrophone(const QString& name, const QString& description) : name_(name) {
    const auto load = QStringLiteral("load-module");
    sinkModule_ = pactl({load, QStringLiteral("module-null-sink"), QStringLiteral("rate=48000"),
                         QStringLiteral("norewinds=1"), QStringLiteral("sink_name=") + sink()});
    sourceModule_ = pactl({load, QStringLiteral("module-remap-source"), QStringLiteral("source_name=") + name,
                           QStringLiteral("master=%1.monitor").arg(sink()),
                           QStringLiteral("source_properties=\"device.description='%1'\"").arg(description)});
}

PluggedMicrophone::~PluggedMicrophone() {
    for (const auto& module : {sourceModule_, sinkModule_})
        runTool(QStringLiteral("pactl"), {QStringLiteral("unload-module"), module});
}

QString PluggedMicrophone::sink() const { return name_ + QStringLiteral("_speaker"); }

void PluggedMicrophone::makeDefault() const { sound::setDefaultSource(name_); }

namespace sound {

SpeechSample shortSentence() {
    return {sampleFolder + QStringLiteral("sense_and_sensibility_01_austen_64kb-0880.wav"),
            QStringLiteral("he was not an ill disposed young man"), 2.99};
}

SpeechSample longSentence() {
    return {sampleFolder + QStringLiteral("sense_and_sensibility_01_austen_64kb-0870.wav"),
            QStringLiteral(
                "and mister john dashwood had then leisure to consider how much there might be prudently in "
                "his power to do for them"),
            7.1};
}

QString defaultSource() { return pactl({QStringLiteral("get-default-source")}); }

void setDefaultSource(const QString& name) { pactl({QStringLiteral("set-default-source"), name}); }

void stopServer() {
    runTool(QStringLiteral("pulseaudio"), {QStringLiteral("--kill")});
    if (!waitUntil([] { return !serverAnswers(); }))
        throw std::runtime_error("the sound server does not end");
}

void startServer() {
    const QString script = qEnvironmentVariable("LORVANE_DESKTOP") + QStringLiteral("/audio-server");
    if (!QProcess::startDetached(script, {}))
        throw std::runtime_error("cannot run " + script.toStdString());
    if (!waitUntil([] { return serverAnswers() && defaultSource() == virtualMicrophone; }))
        throw std::runtime_error("the sound server does not come back");
}

} // namespace sound

} // namespace lorvane
