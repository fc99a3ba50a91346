// SPDX-License-Identifier: GPL-3.0-or-later
// The recorder on a real sound server, from the microphone to the PCM.
#include "audio/MacRecorder.h"
#include "base/PreferenceCatalogue.h"
#include "base/testing/TestFoundation.h"
#include "platform/linux/av/SwrPCMConverter.h"
#include "platform/linux/desktop/QtClock.h"
#include "platform/linux/pulse/PulseAudioEngineFactory.h"
#include "platform/linux/pulse/PulseInputDevices.h"
#include "support/VirtualMicrophone.h"
#include "support/Wait.h"

#include <QTemporaryDir>

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>

namespace lorvane {

namespace {

constexpr double toneSeconds = 2.0;
constexpr double toneHertz = 440.0;

std::vector<qint16> samplesOf(const QByteArray& pcm) {
    std::vector<qint16> samples(static_cast<std::size_t>(pcm.size()) / 2);
    std::memcpy(samples.data(), pcm.constData(), samples.size() * 2);
    return samples;
}

// From the first sample that is no silence to the last.
std::vector<qint16> soundIn(const QByteArray& pcm) {
    const auto samples = samplesOf(pcm);
    const auto loud = [](qint16 sample) { return std::abs(static_cast<int>(sample)) > 1'000; };
    const auto first = std::find_if(samples.begin(), samples.end(), loud);
    const auto last = std::find_if(samples.rbegin(), samples.rend(), loud).base();
    return first < last ? std::vector<qint16>(first, last) : std::vector<qint16>();
}

struct Swing {
    double hertz;
    // Of the sound that swings evenly; the rest is gaps of a busy machine and what rings at their edges.
    double share;
};

Swing swingOf(const std::vector<qint16>& sound) {
    constexpr double expected = 16'000.0 / toneHertz / 2;
    double samples = 0;
    int halves = 0;
    std::size_t last = 0;
    for (std::size_t i = 1; i < sound.size(); ++i) {
        if ((sound[i - 1] < 0) != (sound[i] < 0)) {
            const auto length = static_cast<double>(i - last);
            if (std::abs(length - expected) < expected / 4) {
                samples += length;
                ++halves;
            }
            last = i;
        }
    }
    return {8'000.0 * halves / samples, samples / static_cast<double>(sound.size())};
}

// With enough of it in hand that a busy machine does not run out of sound.
void play(const QString& file, const QString& sink) {
    const auto played = runTool("paplay", {"--latency-msec=2000", "--device=" + sink, file});
    EXPECT_EQ(played.status, 0) << played.errors.toStdString();
}

class MicrophoneTest : public ::testing::Test {
 protected:
    void SetUp() override {
        connection.awaitReady(generously);
        const auto made =
            runTool("sox", {"-n", "-r", "48000", "-c", "1", tone, "synth", QString::number(toneSeconds),
                            "sine", QString::number(toneHertz), "vol", "0.5"});
        ASSERT_EQ(made.status, 0) << made.errors.toStdString();
    }
    // Only real time passes on a real server; everything else of the foundation is a fake.
    QByteArray takeOfTone(const QString& sink) {
        EXPECT_TRUE(recorder.start().has_value());
        play(tone, sink);
        EXPECT_TRUE(fallsSilent());
        return recorder.stop().value_or(QByteArray());
    }
    void expectTone(const QByteArray& pcm) {
        const auto heard = soundIn(pcm);
        EXPECT_NEAR(static_cast<double>(heard.size()) / 16'000.0, toneSeconds, 0.05);
        const Swing swing = swingOf(heard);
        EXPECT_NEAR(swing.hertz, toneHertz, 3.0);
        EXPECT_GT(swing.share, 0.9);
    }
    bool fallsSilent() {
        return waitUntil([&] { return recorder.level() < 0.1; });
    }
    bool growsLouder() {
        return waitUntil([&] { return recorder.level() > 0.5; });
    }
    bool knows(const QString& uid) {
        return waitUntil([&] { return MacAudioDevices::deviceID(devices, uid).has_value(); });
    }

    QTemporaryDir folder;
    const QString tone = folder.filePath("tone.wav");
    QtClock clock;
    TestFoundation fakes;
    Foundation foundation{clock, fakes.preferences, fakes.words, fakes.log};
    PulseConnection connection{clock};
    PulseInputDevices devices{connection};
    PulseAudioEngineFactory engines{connection, SwrPCMConverter::make};
    MacRecorder recorder{foundation, engines, devices};
};

TEST_F(MicrophoneTest, KeepsDurationAndPitchOfAStereoInputAt48000) {
    expectTone(takeOfTone(QStringLiteral("virtual_speaker")));
}

TEST_F(MicrophoneTest, KeepsDurationAndPitchOfAChosenStereoInputAt44100) {
    for (const QStringList& module :
         {QStringList{"load-module", "module-null-sink", "sink_name=cd_speaker", "rate=44100", "channels=2"},
          QStringList{"load-module", "module-remap-source", "source_name=cd", "master=cd_speaker.monitor"}}) {
        ASSERT_EQ(runTool("pactl", module).status, 0);
    }
    ASSERT_TRUE(knows(QStringLiteral("cd")));
    fakes.preferences.set(preference::inputUID, QStringLiteral("cd"));
    expectTone(takeOfTone(QStringLiteral("cd_speaker")));
}

TEST_F(MicrophoneTest, TheChosenOneIsHeardAndNotTheDefault) {
    const PluggedMicrophone headset(QStringLiteral("usb_headset"), QStringLiteral("Headset"));
    ASSERT_TRUE(knows(QStringLiteral("usb_headset")));
    fakes.preferences.set(preference::inputUID, QStringLiteral("usb_headset"));
    EXPECT_TRUE(soundIn(takeOfTone(QStringLiteral("virtual_speaker"))).empty());
    expectTone(takeOfTone(headset.sink()));
}

TEST_F(MicrophoneTest, ATakeGoesOnWhenTheChosenMicrophoneIsUnplugged) {
    auto headset =
        std::make_unique<PluggedMicrophone>(QStringLiteral("usb_headset"), QStringLiteral("Headset"));
    ASSERT_TRUE(knows(QStringLiteral("usb_headset")));
    fakes.preferences.set(preference::inputUID, QStringLiteral("usb_headset"));
    ASSERT_TRUE(recorder.start().has_value());
    play(tone, headset->sink());
    headset.reset();
    ASSERT_TRUE(fallsSilent());
    {
        const Playback second(tone, QStringLiteral("virtual_speaker"));
        EXPECT_TRUE(growsLouder()) << fakes.lines.join(u'\n').toStdString();
    }
    const auto pcm = recorder.stop();
    ASSERT_TRUE(pcm);
    EXPECT_GT(soundIn(*pcm).size(), 32'000U) << "what was heard before is kept";
    EXPECT_EQ(fakes.preferences.get(preference::inputUID), QStringLiteral("usb_headset"));
}

TEST_F(MicrophoneTest, ATakeGoesOnWhenTheServerIsRestarted) {
    ASSERT_TRUE(recorder.start().has_value());
    play(tone, QStringLiteral("virtual_speaker"));
    ASSERT_TRUE(fallsSilent());
    sound::stopServer();
    EXPECT_TRUE(recorder.isRecording());
    sound::startServer();
    const Playback second(tone, QStringLiteral("virtual_speaker"));
    EXPECT_TRUE(growsLouder()) << fakes.lines.join(u'\n').toStdString();
    EXPECT_GT(soundIn(*recorder.stop()).size(), 32'000U);
}

TEST_F(MicrophoneTest, WithoutAServerThereIsNoMicrophone) {
    sound::stopServer();
    const auto started = recorder.start();
    sound::startServer();
    ASSERT_FALSE(started.has_value());
    EXPECT_EQ(started.error().kind, MacRecorder::StartFailure::Kind::noInput);
    expectTone(takeOfTone(QStringLiteral("virtual_speaker")));
}

} // namespace

} // namespace lorvane
