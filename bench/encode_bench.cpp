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
#include <ctime>
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

struct Cost {
    double wall;
    double processor;
};

Cost ours(const TakeEncoder& encoder, const QByteArray& pcm) {
    const std::clock_t processorBefore = std::clock();
    const auto before = std::chrono::steady_clock::now();
    const auto take = encoder.encodeTake(pcm);
    const std::chrono::duration<double, std::milli> passed = std::chrono::steady_clock::now() - before;
    if (!take || take->ext != QStringLiteral("m4a")) {
        throw std::runtime_error("no m4a came out");
    }
    const auto ticks = static_cast<double>(std::clock() - processorBefore);
    return {passed.count(), ticks * 1'000 / CLOCKS_PER_SEC};
}

Cost reference(const QString& input, const QString& output) {
    QProcess ffmpeg;
    ffmpeg.start("ffmpeg",
                 {"-nostdin", "-hide_banner", "-benchmark", "-y", "-f", "s16le", "-ar", "16000", "-ac", "1",
                  "-i", input, "-c:a", "aac", "-aac_coder", "fast", "-b:a", "32000", output});
    ffmpeg.waitForFinished();
    const QString told = QString::fromUtf8(ffmpeg.readAllStandardError());
    const auto match = QRegularExpression("utime=([0-9.]+)s stime=([0-9.]+)s rtime=([0-9.]+)s").match(told);
    if (!match.hasMatch()) {
        throw std::runtime_error("ffmpeg told no time: " + told.toStdString());
    }
    const auto milliseconds = [&](int nth) { return match.captured(nth).toDouble() * 1'000; };
    return {milliseconds(3), milliseconds(1) + milliseconds(2)};
}

double median(const std::vector<Cost>& costs, double Cost::*figure) {
    std::vector<double> values;
    for (const Cost& cost : costs) {
        values.push_back(cost.*figure);
    }
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void print(const char* what, const std::vector<Cost>& our, const std::vector<Cost>& their,
           double Cost::*figure) {
    const double one = median(our, figure);
    const double other = median(their, figure);
    std::printf("  %s: lorvane %.1f ms, ffmpeg %.1f ms, ratio %.2f\n", what, one, other, one / other);
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
    std::vector<Cost> our;
    std::vector<Cost> their;
    // By turns, so that both meet the same machine.
    for (int round = 0; round <= rounds; ++round) {
        const Cost one = ours(encoder, pcm);
        const Cost other = reference(input.fileName(), folder.filePath("reference.m4a"));
        if (round > 0) {
            our.push_back(one);
            their.push_back(other);
        }
    }
    std::printf("encode a 60 s take, medians of %d\n", rounds);
    print("time passed", our, their, &Cost::wall);
    print("processor time", our, their, &Cost::processor);
}
