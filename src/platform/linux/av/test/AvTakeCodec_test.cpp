// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/av/AvTakeCodec.h"

#include "audio/TakeEncoder.h"
#include "base/testing/TestFoundation.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>

#include <thread>

namespace lorvane {

namespace {

const auto speechFolder = QStringLiteral("/usr/share/pocketsphinx/test/data/librivox");

QByteArray outputOf(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished(60'000)) << program.toStdString();
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    return process.readAllStandardOutput();
}

QByteArray decode(const QString& path) {
    return outputOf("ffmpeg", {"-v", "error", "-nostdin", "-i", path, "-f", "s16le", "-ac", "1", "-"});
}

std::vector<qint16> samplesOf(const QByteArray& pcm) {
    std::vector<qint16> samples(static_cast<std::size_t>(pcm.size()) / 2);
    std::memcpy(samples.data(), pcm.constData(), samples.size() * 2);
    return samples;
}

// In decibels.
double signalToNoise(const QByteArray& original, const QByteArray& decoded) {
    const auto signal = samplesOf(original);
    const auto heard = samplesOf(decoded);
    double power = 0;
    double noise = 0;
    for (std::size_t i = 0; i < std::min(signal.size(), heard.size()); ++i) {
        const double difference = static_cast<double>(signal[i]) - heard[i];
        power += static_cast<double>(signal[i]) * signal[i];
        noise += difference * difference;
    }
    return 10 * std::log10(power / noise);
}

class AvTakeCodecTest : public ::testing::Test {
 protected:
    // Recorded human speech, 16 kHz mono.
    static QByteArray speech(qsizetype seconds) {
        QByteArray pcm;
        for (const QString& name : QDir(speechFolder).entryList({"*.wav"}, QDir::Files, QDir::Name)) {
            pcm += decode(speechFolder + u'/' + name);
        }
        EXPECT_FALSE(pcm.isEmpty()) << "no speech in " << speechFolder.toStdString();
        while (!pcm.isEmpty() && pcm.size() < seconds * 32'000) {
            pcm += pcm;
        }
        return pcm.first(std::min(pcm.size(), seconds * 32'000));
    }
    QString write(const Take& take) {
        const QString path = folder.filePath("take." + take.ext);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(take.data);
        return path;
    }
    // "key=value" lines about the only stream.
    static QString probe(const QString& path, const QString& key) {
        const QByteArray lines =
            outputOf("ffprobe", {"-v", "error", "-show_entries", "stream=" + key + ":format=" + key, "-of",
                                 "default=noprint_wrappers=1:nokey=1", path});
        return QString::fromUtf8(lines).split(u'\n').value(0);
    }

    TestFoundation world;
    AvTakeCodec codec;
    QTemporaryDir folder;
    TakeEncoder encoder{world.foundation, codec, {folder.path(), {}}};
};

TEST_F(AvTakeCodecTest, ATakeOfSpeechIsAnM4aFileOfTheStatedKind) {
    const QByteArray pcm = speech(20);
    const auto take = encoder.encodeTake(pcm);
    ASSERT_TRUE(take);
    EXPECT_EQ(take->ext, QStringLiteral("m4a"));
    EXPECT_TRUE(world.lines.isEmpty());
    EXPECT_EQ(take->data.mid(4, 4), "ftyp");
    const QString path = write(*take);
    EXPECT_EQ(probe(path, "codec_name"), "aac");
    EXPECT_EQ(probe(path, "profile"), "LC");
    EXPECT_EQ(probe(path, "sample_rate"), "16000");
    EXPECT_EQ(probe(path, "channels"), "1");
    EXPECT_NEAR(probe(path, "bit_rate").toDouble(), 32'000, 3'200);
    EXPECT_NEAR(probe(path, "duration").toDouble(), 20.0, 0.1);
    EXPECT_NEAR(static_cast<double>(take->data.size()), 20 * 4'000, 8'000);
}

TEST_F(AvTakeCodecTest, WhatIsDecodedIsCloseToWhatWasSaid) {
    const QByteArray pcm = speech(10);
    const auto take = encoder.encodeTake(pcm);
    ASSERT_TRUE(take);
    const QByteArray heard = decode(write(*take));
    EXPECT_NEAR(static_cast<double>(heard.size()), static_cast<double>(pcm.size()), 2 * 1'024);
    const double ratio = signalToNoise(pcm, heard);
    EXPECT_GT(ratio, 20.0);
    RecordProperty("signalToNoise", std::to_string(ratio));
}

TEST_F(AvTakeCodecTest, FlacGivesEverySampleBack) {
    struct NoAac final : TakeCodec {
        AvTakeCodec real;
        Result<void, QString> writeFile(const QByteArray& samples, const TakeSettings& settings,
                                        const QString& path) override {
            if (settings.format == TakeFormat::aac) {
                return failure(QStringLiteral("none"));
            }
            return real.writeFile(samples, settings, path);
        }
    } noAac;
    const QByteArray pcm = speech(5) + 'o';
    const auto take = TakeEncoder(world.foundation, noAac, {folder.path(), {}}).encodeTake(pcm);
    ASSERT_TRUE(take);
    EXPECT_EQ(take->ext, QStringLiteral("flac"));
    EXPECT_EQ(take->data.first(4), "fLaC");
    const QString path = write(*take);
    EXPECT_EQ(probe(path, "codec_name"), "flac");
    EXPECT_EQ(probe(path, "sample_rate"), "16000");
    EXPECT_EQ(probe(path, "bits_per_raw_sample"), "16");
    EXPECT_NEAR(probe(path, "duration").toDouble(), 5.0, 0.001);
    EXPECT_EQ(decode(path), pcm.chopped(1));
}

TEST_F(AvTakeCodecTest, TheShortestTakeIsACompleteFile) {
    const auto take = encoder.encodeTake(speech(1).first(TakeEncoder::minimumBytes));
    ASSERT_TRUE(take);
    EXPECT_EQ(take->ext, QStringLiteral("m4a"));
    EXPECT_NEAR(static_cast<double>(decode(write(*take)).size()), 3'200, 2 * 1'024);
}

TEST_F(AvTakeCodecTest, SilenceIsATakeToo) {
    const auto take = encoder.encodeTake(QByteArray(64'000, '\0'));
    ASSERT_TRUE(take);
    EXPECT_EQ(take->ext, QStringLiteral("m4a"));
    const auto heard = samplesOf(decode(write(*take)));
    ASSERT_GE(heard.size(), 31'000U);
    EXPECT_LE(*std::max_element(heard.begin(), heard.end()), 1);
}

TEST_F(AvTakeCodecTest, AFileThatCannotBeWrittenFailsInTheSystemsWords) {
    const auto written = codec.writeFile(QByteArray(4'000, '\0'), {.bitRate = 32'000}, "/nowhere/at/all.m4a");
    ASSERT_FALSE(written.has_value());
    EXPECT_EQ(written.error(), QStringLiteral("No such file or directory"));
}

TEST_F(AvTakeCodecTest, AFullDiskIsAFailureAndNotAShortFile) {
    const auto written = codec.writeFile(speech(5), {.bitRate = 32'000}, "/dev/full");
    EXPECT_FALSE(written.has_value());
    QFile::link("/dev/full", folder.filePath("full.flac"));
    const auto full = codec.writeFile(speech(5), {.format = TakeFormat::flac, .bitDepth = 16},
                                      folder.filePath("full.flac"));
    ASSERT_FALSE(full.has_value());
    EXPECT_EQ(full.error(), QStringLiteral("No space left on device"));
}

TEST_F(AvTakeCodecTest, TwoCallsAtOnceDoNotMeet) {
    const QByteArray pcm = speech(5);
    std::optional<Take> other;
    std::thread second([&] { other = encoder.encodeTake(pcm); });
    const auto one = encoder.encodeTake(pcm);
    second.join();
    ASSERT_TRUE(one && other);
    EXPECT_EQ(one->ext, QStringLiteral("m4a"));
    EXPECT_EQ(decode(write(*one)), decode(write(*other)));
}

} // namespace

} // namespace lorvane
