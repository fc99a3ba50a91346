// SPDX-License-Identifier: GPL-3.0-or-later
#include "DictationDesk.h"
#include "support/VirtualMicrophone.h"

#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>

namespace lorvane {

namespace {

using std::chrono::milliseconds;

const QString words = QStringLiteral("Heard.");
const QString headset = QStringLiteral("usb_headset");
const QString speaker = QStringLiteral("virtual_speaker");
constexpr int rate = 16000;

constexpr int lowTone = 400;
constexpr int highTone = 1000;

// How much of each tone there is in a stretch of a take, of full scale.
struct Sound {
    double low = 0;
    double high = 0;
};

// Looked for in short pieces, of which each holds whole waves of either tone: a player that is late on a busy
// machine leaves gaps, which shift the waves after them.
double amountOf(int pitch, const std::vector<double>& samples) {
    constexpr std::size_t piece = rate / 40;
    double amounts = 0;
    std::size_t pieces = 0;
    for (std::size_t first = 0; first + piece <= samples.size(); first += piece, ++pieces) {
        std::complex<double> sum = 0;
        for (std::size_t at = 0; at < piece; ++at) {
            sum += samples[first + at] * std::polar(1.0, 2 * M_PI * pitch * static_cast<double>(at) / rate);
        }
        amounts += 2 * std::abs(sum) / piece;
    }
    return pieces == 0 ? 0 : amounts / static_cast<double>(pieces);
}

Sound soundOf(const std::vector<double>& samples) {
    return {amountOf(lowTone, samples), amountOf(highTone, samples)};
}

::testing::AssertionResult isTone(const Sound& heard, double wanted, double other) {
    constexpr double loud = 0.1; // 0.5 is played
    if (wanted > loud && other < wanted / 10) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure()
           << "heard of the low tone " << heard.low << ", of the high one " << heard.high;
}
::testing::AssertionResult isLow(const Sound& heard) { return isTone(heard, heard.low, heard.high); }
::testing::AssertionResult isHigh(const Sound& heard) { return isTone(heard, heard.high, heard.low); }

class DictationMicrophone : public DictationDesk {
 protected:
    /// A file with half a minute of a tone.
    QString tone(int pitch) {
        QString file = folder.filePath(QStringLiteral("%1.wav").arg(pitch));
        const ToolResult made =
            runTool(QStringLiteral("sox"), QStringLiteral("-n -r 48000 -c 1 %1 synth 30 sine %2 gain -6")
                                               .arg(file)
                                               .arg(pitch)
                                               .split(QLatin1Char(' ')));
        EXPECT_EQ(made.status, 0) << made.errors.constData();
        return file;
    }
    static void waitForTones(int count) {
        const QStringList list{QStringLiteral("list"), QStringLiteral("short"),
                               QStringLiteral("sink-inputs")};
        EXPECT_TRUE(
            waitUntil([&] { return runTool(QStringLiteral("pactl"), list).output.count('\n') == count; }));
        stay(milliseconds(300)); // from the stream's start to its sound
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
    const Playback low(tone(lowTone), other.sink());
    const Playback high(tone(highTone), speaker);
    waitForTones(2);
    startHearing(words);
    holdFor(milliseconds(1500));
    EXPECT_TRUE(goesThrough(delivered));
    ASSERT_EQ(takes().size(), 1U);
    const Sound heard = halfSecond(samplesOf(takes()[0]), 0.7);
    EXPECT_TRUE(isHigh(heard));
}

TEST_F(DictationMicrophone, TheChosenOneIsHeardAndNotTheDefault) {
    const PluggedMicrophone other(headset, QStringLiteral("USB Headset"));
    const Playback low(tone(lowTone), other.sink());
    const Playback high(tone(highTone), speaker);
    waitForTones(2);
    startHearing(words, {{QStringLiteral("tirra.mac.inputUID"), headset}});
    holdFor(milliseconds(1500));
    EXPECT_TRUE(goesThrough(delivered));
    ASSERT_EQ(takes().size(), 1U);
    const Sound heard = halfSecond(samplesOf(takes()[0]), 0.7);
    EXPECT_TRUE(isLow(heard));
}

TEST_F(DictationMicrophone, AChosenOneThatIsNotThereLeavesTheDefault) {
    const Playback high(tone(highTone), speaker);
    waitForTones(1);
    startHearing(words, {{QStringLiteral("tirra.mac.inputUID"), QStringLiteral("gone")}});
    holdFor(milliseconds(1500));
    EXPECT_TRUE(goesThrough(delivered));
    ASSERT_EQ(takes().size(), 1U);
    const Sound heard = halfSecond(samplesOf(takes()[0]), 0.7);
    EXPECT_TRUE(isHigh(heard));
}

TEST_F(DictationMicrophone, UnpluggedInMidTakeTheTakeGoesOnFromTheDefault) {
    auto other = std::make_unique<PluggedMicrophone>(headset, QStringLiteral("USB Headset"));
    auto low = std::make_unique<Playback>(tone(lowTone), other->sink());
    const Playback high(tone(highTone), speaker);
    waitForTones(2);
    const auto editor = DesktopApp::mousepad();
    startHearing(words, {{QStringLiteral("tirra.mac.inputUID"), headset}});
    tapHandsFree();
    ASSERT_TRUE(program->waitForPhase(QStringLiteral("recording")));
    stay(milliseconds(1200));
    low.reset(); // else the server moves it to the other sink
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
    EXPECT_TRUE(isLow(before));
    EXPECT_TRUE(isHigh(after)) << "take of " << seconds(samples) << " s\n" << program->log().toStdString();
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
    const Playback high(tone(highTone), speaker);
    waitForTones(1);
    holdFor(milliseconds(1500));
    EXPECT_TRUE(goesThrough(delivered));
    ASSERT_EQ(takes().size(), 1U);
    const Sound heard = halfSecond(samplesOf(takes()[0]), 0.7);
    EXPECT_TRUE(isHigh(heard));
}

} // namespace

} // namespace lorvane
