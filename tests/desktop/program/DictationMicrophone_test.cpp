// SPDX-License-Identifier: GPL-3.0-or-later
#include "DictationDesk.h"
#include "support/VirtualMicrophone.h"

#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace lorvane {

namespace {

using std::chrono::milliseconds;

const QString words = QStringLiteral("Heard.");
const QString headset = QStringLiteral("usb_headset");
const QString speaker = QStringLiteral("virtual_speaker");
constexpr int rate = 16000;

// A stretch of a take.
struct Sound {
    double loudness = 0; // of full scale
    double pitch = 0;    // Hz, by the changes of sign
};

Sound soundOf(const std::vector<double>& samples) {
    double squares = 0;
    int changes = 0;
    for (std::size_t at = 0; at < samples.size(); ++at) {
        squares += samples[at] * samples[at];
        changes += static_cast<int>(at > 0 && (samples[at] < 0) != (samples[at - 1] < 0));
    }
    const auto count = static_cast<double>(std::max<std::size_t>(samples.size(), 1));
    return {std::sqrt(squares / count), changes * 0.5 * rate / count};
}

std::ostream& operator<<(std::ostream& out, const Sound& sound) {
    return out << sound.loudness << " of full scale at " << sound.pitch << " Hz";
}

class DictationMicrophone : public DictationDesk {
 protected:
    /// Plays a tone into the sink as long as this lasts; the microphone hears it when this returns.
    [[nodiscard]] Playback play(int pitch, const QString& sink) {
        const QString file = folder.filePath(QStringLiteral("%1.wav").arg(pitch));
        const QStringList tone{QStringLiteral("-n"),    QStringLiteral("-r"),   QStringLiteral("48000"),
                               QStringLiteral("-c"),    QStringLiteral("1"),    file,
                               QStringLiteral("synth"), QStringLiteral("30"),   QStringLiteral("sine"),
                               QString::number(pitch),  QStringLiteral("gain"), QStringLiteral("-6")};
        const ToolResult made = runTool(QStringLiteral("sox"), tone);
        EXPECT_EQ(made.status, 0) << made.errors.constData();
        return Playback(file, sink);
    }
    static void waitForTones(int count) {
        const QStringList list{QStringLiteral("list"), QStringLiteral("short"),
                               QStringLiteral("sink-inputs")};
        EXPECT_TRUE(
            waitUntil([&] { return tonesIn(runTool(QStringLiteral("pactl"), list).output) >= count; }));
        stay(milliseconds(300)); // from the stream's start to its sound
    }
    static int tonesIn(const QByteArray& list) {
        return static_cast<int>(list.count("float32le") + list.count("s16le"));
    }

    /// The whole take as the backend got it.
    std::vector<double> samplesOf(const SentTake& take) {
        const QString path =
            folder.filePath(QStringLiteral("take.") + take.fields.value(QStringLiteral("ext")).toString());
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(take.audio);
        file.close();
        const ToolResult decoded =
            runTool(QStringLiteral("ffmpeg"),
                    {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"), path,
                     QStringLiteral("-f"), QStringLiteral("s16le"), QStringLiteral("-ac"),
                     QStringLiteral("1"), QStringLiteral("-ar"), QString::number(rate), QStringLiteral("-")});
        EXPECT_EQ(decoded.status, 0) << decoded.errors.constData();
        std::vector<double> samples(static_cast<std::size_t>(decoded.output.size() / 2));
        for (std::size_t at = 0; at < samples.size(); ++at) {
            qint16 sample = 0;
            std::memcpy(&sample, decoded.output.constData() + 2 * at, sizeof sample);
            samples[at] = sample / 32768.0;
        }
        return samples;
    }
    /// From `from` seconds on, for half a second.
    static Sound halfSecond(const std::vector<double>& samples, double from) {
        const std::size_t first = std::min(samples.size(), static_cast<std::size_t>(from * rate));
        const std::size_t last = std::min(samples.size(), first + rate / 2);
        return soundOf({samples.begin() + static_cast<std::ptrdiff_t>(first),
                        samples.begin() + static_cast<std::ptrdiff_t>(last)});
    }
    static double seconds(const std::vector<double>& samples) {
        return static_cast<double>(samples.size()) / rate;
    }

    QTemporaryDir folder;
};

TEST_F(DictationMicrophone, TheDefaultOneIsHeardWhenNoneIsChosen) {
    const PluggedMicrophone other(headset, QStringLiteral("USB Headset"));
    const Playback low = play(400, other.sink());
    const Playback high = play(1000, speaker);
    waitForTones(2);
    startHearing(words);
    holdFor(milliseconds(1500));
    EXPECT_TRUE(goesThrough(delivered));
    ASSERT_EQ(takes().size(), 1U);
    const Sound heard = halfSecond(samplesOf(takes()[0]), 0.7);
    EXPECT_GT(heard.loudness, 0.05) << heard;
    EXPECT_NEAR(heard.pitch, 1000, 10) << heard;
}

TEST_F(DictationMicrophone, TheChosenOneIsHeardAndNotTheDefault) {
    const PluggedMicrophone other(headset, QStringLiteral("USB Headset"));
    const Playback low = play(400, other.sink());
    const Playback high = play(1000, speaker);
    waitForTones(2);
    startHearing(words, {{QStringLiteral("tirra.mac.inputUID"), headset}});
    holdFor(milliseconds(1500));
    EXPECT_TRUE(goesThrough(delivered));
    ASSERT_EQ(takes().size(), 1U);
    const Sound heard = halfSecond(samplesOf(takes()[0]), 0.7);
    EXPECT_GT(heard.loudness, 0.05) << heard;
    EXPECT_NEAR(heard.pitch, 400, 10) << heard;
}

TEST_F(DictationMicrophone, AChosenOneThatIsNotThereLeavesTheDefault) {
    const Playback high = play(1000, speaker);
    waitForTones(1);
    startHearing(words, {{QStringLiteral("tirra.mac.inputUID"), QStringLiteral("gone")}});
    holdFor(milliseconds(1500));
    EXPECT_TRUE(goesThrough(delivered));
    ASSERT_EQ(takes().size(), 1U);
    const Sound heard = halfSecond(samplesOf(takes()[0]), 0.7);
    EXPECT_NEAR(heard.pitch, 1000, 10) << heard;
}

TEST_F(DictationMicrophone, UnpluggedInMidTakeTheTakeGoesOnFromTheDefault) {
    auto other = std::make_unique<PluggedMicrophone>(headset, QStringLiteral("USB Headset"));
    const Playback low = play(400, other->sink());
    const Playback high = play(1000, speaker);
    waitForTones(2);
    const auto editor = DesktopApp::mousepad();
    startHearing(words, {{QStringLiteral("tirra.mac.inputUID"), headset}});
    tapHandsFree();
    ASSERT_TRUE(program->waitForPhase(QStringLiteral("recording")));
    stay(milliseconds(1200));
    other.reset();
    stay(milliseconds(2000));
    EXPECT_EQ(program->phase(), QStringLiteral("recording"));
    tapHandsFree();
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_EQ(editor->waitForText(words), words);
    ASSERT_EQ(takes().size(), 1U);
    const std::vector<double> samples = samplesOf(takes()[0]);
    const Sound before = halfSecond(samples, 0.5);
    const Sound after = halfSecond(samples, seconds(samples) - 0.7);
    EXPECT_NEAR(before.pitch, 400, 10) << before;
    EXPECT_NEAR(after.pitch, 1000, 10) << after << ", take of " << seconds(samples) << " s\n"
                                       << program->log().toStdString();
    EXPECT_GT(seconds(samples), 2.5);
}

TEST_F(DictationMicrophone, WithoutASoundServerTheNoticeSaysSoAndTheNextTakeWorksOnceItIsBack) {
    startHearing(words);
    sound::stopServer();
    holdFor(milliseconds(500));
    EXPECT_TRUE(goesThrough(
        {noticePhase(QStringLiteral("No microphone on the selected input — check the sound settings")),
         QStringLiteral("idle")}));
    sound::startServer();
    const Playback high = play(1000, speaker);
    waitForTones(1);
    holdFor(milliseconds(1500));
    EXPECT_TRUE(goesThrough(delivered));
    ASSERT_EQ(takes().size(), 1U);
    const Sound heard = halfSecond(samplesOf(takes()[0]), 0.7);
    EXPECT_NEAR(heard.pitch, 1000, 10) << heard;
}

} // namespace

} // namespace lorvane
