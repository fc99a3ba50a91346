// SPDX-License-Identifier: GPL-3.0-or-later
// From the start of a recording to its first captured sample, in the sound server of a virtual desktop, with
// the connection standing as it does in the program. Reference: parec on the same source, from its own start
// to its first byte; it has to connect first, which is what a program without a standing connection does.
#include "platform/linux/desktop/QtClock.h"
#include "platform/linux/pulse/PulseAudioEngine.h"

#include <QCoreApplication>
#include <QProcess>

#include <algorithm>
#include <cstdio>
#include <future>
#include <stdexcept>

namespace {

using namespace lorvane;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr int rounds = 40;

struct Figures {
    double started;
    double heard;
};

Figures ours(PulseConnection& connection) {
    std::promise<std::chrono::steady_clock::time_point> first;
    std::atomic<bool> heard{false};
    const auto before = std::chrono::steady_clock::now();
    PulseAudioEngine engine(connection);
    if (engine.inputFormat().channels == 0 || !engine.start(4'096, [&](const InputBuffer&) {
            if (!heard.exchange(true)) {
                first.set_value(std::chrono::steady_clock::now());
            }
        })) {
        throw std::runtime_error("nothing to capture from");
    }
    const auto running = std::chrono::steady_clock::now();
    const auto arrived = first.get_future().get();
    return {Milliseconds(running - before).count(), Milliseconds(arrived - before).count()};
}

double reference() {
    QProcess recorder;
    const auto before = std::chrono::steady_clock::now();
    recorder.start("parec", {"--latency-msec=10"});
    if (!recorder.waitForReadyRead()) {
        throw std::runtime_error("parec records nothing");
    }
    const auto arrived = std::chrono::steady_clock::now();
    recorder.terminate();
    recorder.waitForFinished();
    return Milliseconds(arrived - before).count();
}

double at(std::vector<double>& values, double share) {
    std::sort(values.begin(), values.end());
    return values[std::min(values.size() - 1,
                           static_cast<std::size_t>(share * static_cast<double>(values.size())))];
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QtClock clock;
    PulseConnection connection(clock);
    connection.awaitReady(std::chrono::seconds(5));
    std::vector<double> started;
    std::vector<double> heard;
    std::vector<double> theirs;
    for (int round = 0; round < rounds; ++round) {
        const Figures figures = ours(connection);
        started.push_back(figures.started);
        heard.push_back(figures.heard);
        theirs.push_back(reference());
    }
    std::printf("start returns: median %.1f ms, p95 %.1f ms\n", at(started, 0.5), at(started, 0.95));
    std::printf(
        "start to first sample: lorvane median %.1f ms, p95 %.1f ms; parec median %.1f ms; ratio %.2f\n",
        at(heard, 0.5), at(heard, 0.95), at(theirs, 0.5), at(heard, 0.5) / at(theirs, 0.5));
}
