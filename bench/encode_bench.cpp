// SPDX-License-Identifier: GPL-3.0-or-later
// Encodes a take of 60 s of recorded speech as the program does, and lets the ffmpeg command do the same work
// with the same libraries and settings: PCM file in, m4a file out, 32 kbit/s. ffmpeg's figure is its own
// (-benchmark: from the first sample read to the file closed), so starting the process is not counted. Ours
// includes reading the file back.
#include "audio/TakeEncoder.h"
#include "base/testing/TestFoundation.h"
#include "platform/linux/av/AvTakeCodec.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <vector>

namespace {

using namespace lorvane;

constexpr int rounds = 15;
constexpr qsizetype takeSeconds = 60;

QByteArray speech() {
    const QDir folder("/usr/share/pocketsphinx/test/data/librivox");
    QByteArray pcm;
    for (const QString& name : folder.entryList({"*.wav"}, QDir::Files, QDir::Name)) {
        QProcess sox;
        sox.start("sox", {folder.filePath(name), "-t", "raw", "-r", "16000", "-e", "signed-integer", "-b",
                          "16", "-c", "1", "-"});
        sox.waitForFinished();
        pcm += sox.readAllStandardOutput();
    }
    if (pcm.isEmpty()) {
        throw std::runtime_error("no speech: install pocketsphinx-testdata");
    }
    while (pcm.size() < takeSeconds * 32'000) {
        pcm += pcm;
    }
    return pcm.first(takeSeconds * 32'000);
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double ours(const TakeEncoder& encoder, const QByteArray& pcm) {
    const auto before = std::chrono::steady_clock::now();
    const auto take = encoder.encodeTake(pcm);
    const std::chrono::duration<double, std::milli> passed = std::chrono::steady_clock::now() - before;
    if (!take || take->ext != QStringLiteral("m4a")) {
        throw std::runtime_error("no m4a came out");
    }
    return passed.count();
}

double reference(const QString& input, const QString& output) {
    QProcess ffmpeg;
    ffmpeg.start("ffmpeg",
                 {"-nostdin", "-hide_banner", "-benchmark", "-y", "-f", "s16le", "-ar", "16000", "-ac", "1",
                  "-i", input, "-c:a", "aac", "-aac_coder", "fast", "-b:a", "32000", output});
    ffmpeg.waitForFinished();
    const QString told = QString::fromUtf8(ffmpeg.readAllStandardError());
    const auto match = QRegularExpression("rtime=([0-9.]+)s").match(told);
    if (!match.hasMatch()) {
        throw std::runtime_error("ffmpeg told no time: " + told.toStdString());
    }
    return match.captured(1).toDouble() * 1'000;
}

} // namespace

int main() {
    TestFoundation world;
    AvTakeCodec codec;
    const QTemporaryDir folder;
    const TakeEncoder encoder(world.foundation, codec, {folder.path(), {}});
    const QByteArray pcm = speech();
    QFile input(folder.filePath("take.raw"));
    if (!input.open(QIODevice::WriteOnly) || input.write(pcm) != pcm.size()) {
        throw std::runtime_error("cannot write the input");
    }
    input.close();
    std::vector<double> our;
    std::vector<double> their;
    // By turns, so that both meet the same machine.
    for (int round = 0; round <= rounds; ++round) {
        const double one = ours(encoder, pcm);
        const double other = reference(input.fileName(), folder.filePath("reference.m4a"));
        if (round > 0) {
            our.push_back(one);
            their.push_back(other);
        }
    }
    std::printf("encode a 60 s take: lorvane %.1f ms, ffmpeg %.1f ms, ratio %.2f (medians of %d)\n",
                median(our), median(their), median(our) / median(their), rounds);
}
