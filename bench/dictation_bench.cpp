// SPDX-License-Identifier: GPL-3.0-or-later
// What a user waits for, measured from outside the program in a virtual desktop: from the release of the key
// to the request on the wire, from the finished text to the text in the editor, and the start of the program;
// then what it costs at rest. References: curl posting the same bytes; a paste by hand (xclip and the same
// chord); the same program asked for its version.
#include "audio/TakeEncoder.h"
#include "base/testing/TestFoundation.h"
#include "platform/linux/av/AvTakeCodec.h"
#include "support/DesktopApps.h"
#include "support/FieldReader.h"
#include "support/LorvaneProgram.h"
#include "support/PhysicalKeyboard.h"
#include "support/ScriptedBackend.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QTemporaryFile>

#include <algorithm>
#include <cstdio>

#include <unistd.h>

namespace {

using namespace lorvane;
using SteadyTime = std::chrono::steady_clock::time_point;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr int rounds = 7;
constexpr std::chrono::seconds takeLength{10};

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double since(SteadyTime then) { return Milliseconds(std::chrono::steady_clock::now() - then).count(); }

void report(const char* what, const std::vector<double>& ours, const std::vector<double>& reference,
            const char* of) {
    const double a = median(ours);
    const double b = median(reference);
    std::printf("%-34s %8.1f ms   worst %8.1f ms   %s %8.1f ms   ratio %.2f\n", what, a,
                *std::max_element(ours.begin(), ours.end()), of, b, a / b);
    std::fflush(stdout);
}

void pause(std::chrono::milliseconds time) {
    static_cast<void>(waitUntil([] { return false; }, time));
}

QByteArray doneLine(const QString& text) {
    const QJsonObject line{{QStringLiteral("type"), QStringLiteral("done")},
                           {QStringLiteral("text"), text},
                           {QStringLiteral("raw"), text}};
    return QJsonDocument(line).toJson(QJsonDocument::Compact);
}

/// How long the encoder alone needs for a take of that length of noise, which is the hardest to encode.
double encodingTime() {
    TestFoundation base;
    AvTakeCodec codec;
    const TakeEncoder encoder(base.foundation, codec);
    QByteArray pcm(static_cast<qsizetype>(takeLength.count()) * 32'000, '\0');
    unsigned state = 1;
    for (char& byte : pcm) {
        state = state * 1'664'525U + 1'013'904'223U;
        byte = static_cast<char>((state >> 24) & 0x3F);
    }
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) {
        const auto before = std::chrono::steady_clock::now();
        static_cast<void>(encoder.encodeTake(pcm));
        times.push_back(since(before));
    }
    return median(times);
}

double postByCurl(const ScriptedBackend& backend, const QByteArray& body) {
    QTemporaryFile file;
    static_cast<void>(file.open());
    file.write(body);
    file.flush();
    const auto before = std::chrono::steady_clock::now();
    QProcess curl;
    curl.start(QStringLiteral("curl"),
               {QStringLiteral("-s"), QStringLiteral("--data-binary"), u'@' + file.fileName(),
                backend.url().toString() + QStringLiteral("/by-curl")});
    curl.waitForFinished();
    return Milliseconds(backend.requests("/by-curl").back().arrived - before).count();
}

/// Until the field of the editor ends with `text`.
double untilInField(const FieldReader& reader, qint64 editor, const QString& text, SteadyTime from) {
    while (since(from) < 5000) {
        const auto field = reader.focused(editor);
        if (field && field->text.trimmed().endsWith(text)) {
            return since(from);
        }
        QCoreApplication::processEvents();
    }
    throw std::runtime_error("the text did not arrive in the editor");
}

double pasteByHand(const FieldReader& reader, PhysicalKeyboard& keyboard, qint64 editor,
                   const QString& text) {
    const auto before = std::chrono::steady_clock::now();
    QProcess xclip;
    xclip.start(QStringLiteral("xclip"),
                {QStringLiteral("-selection"), QStringLiteral("clipboard"), QStringLiteral("-i")});
    xclip.write(text.toUtf8());
    xclip.closeWriteChannel();
    xclip.waitForFinished();
    keyboard.chord({keycode::leftControl, keycode::letterV});
    return untilInField(reader, editor, text, before);
}

void measureTakes() {
    ScriptedBackend backend;
    backend.script("/api/register", ScriptedReply::body(R"({"token":"bench"})"));
    for (int i = 0; i < rounds; ++i) {
        backend.script("/api/dictate-stream",
                       ScriptedReply::lines({doneLine(QStringLiteral("measured take number %1").arg(i))}));
    }
    const LorvaneProgram program(backend.url().toString());
    const auto editor = DesktopApp::mousepad();
    const FieldReader reader;
    PhysicalKeyboard keyboard;
    const double encoding = encodingTime();
    std::vector<double> wire;
    std::vector<double> field;
    std::vector<double> curl;
    std::vector<double> hand;
    for (int i = 0; i < rounds; ++i) {
        keyboard.press(keycode::rightControl);
        pause(takeLength);
        keyboard.release(keycode::rightControl);
        const auto released = std::chrono::steady_clock::now();
        const auto arrived = [&] {
            return backend.requests("/api/dictate-stream").size() == static_cast<std::size_t>(i) + 1;
        };
        if (!waitUntil(arrived)) {
            throw std::runtime_error("no request came");
        }
        const auto request = backend.requests("/api/dictate-stream").back();
        wire.push_back(Milliseconds(request.arrived - released).count());
        field.push_back(untilInField(reader, editor->pid(), QStringLiteral("measured take number %1").arg(i),
                                     request.arrived));
        pause(std::chrono::seconds(3)); // the clipboard's return
        curl.push_back(postByCurl(backend, request.body));
        hand.push_back(
            pasteByHand(reader, keyboard, editor->pid(), QStringLiteral(" by hand %1").arg(i).trimmed()));
    }
    std::printf("%-34s %8.1f ms\n", "encoding 10 s of noise alone", encoding);
    report("key up to request on the wire", wire, curl, "curl");
    report("done line to text in the editor", field, hand, "by hand");
}

double startOfVersion() {
    const auto before = std::chrono::steady_clock::now();
    QProcess version;
    version.start(QStringLiteral(LORVANE_PROGRAM), {QStringLiteral("--version")});
    version.waitForFinished();
    return since(before);
}

void measureStart() {
    ScriptedBackend backend;
    backend.script("/api/register", ScriptedReply::body(R"({"token":"bench"})"));
    std::vector<double> ours;
    std::vector<double> reference;
    for (int i = 0; i < rounds; ++i) {
        const auto before = std::chrono::steady_clock::now();
        const LorvaneProgram program(backend.url().toString());
        ours.push_back(since(before));
        reference.push_back(startOfVersion());
    }
    report("start to ready", ours, reference, "--version");
}

struct Resources {
    double megabytes;
    double cpuSeconds;
};

Resources resourcesOf(qint64 pid) {
    QFile status(QStringLiteral("/proc/%1/statm").arg(pid));
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    static_cast<void>(status.open(QIODevice::ReadOnly));
    static_cast<void>(stat.open(QIODevice::ReadOnly));
    const double pages = status.readAll().split(' ').at(1).toDouble();
    const auto fields = stat.readAll().split(' ');
    const double ticks = fields.at(13).toDouble() + fields.at(14).toDouble();
    return {pages * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e6,
            ticks / static_cast<double>(sysconf(_SC_CLK_TCK))};
}

void measureRest() {
    ScriptedBackend backend;
    backend.script("/api/register", ScriptedReply::body(R"({"token":"bench"})"));
    const LorvaneProgram program(backend.url().toString());
    pause(std::chrono::seconds(5));
    const Resources before = resourcesOf(program.pid());
    constexpr std::chrono::seconds time{60};
    pause(time);
    const Resources after = resourcesOf(program.pid());
    std::printf("at rest: %.1f MB resident, %.3f %% of one core over %lld s\n", after.megabytes,
                100 * (after.cpuSeconds - before.cpuSeconds) / static_cast<double>(time.count()),
                static_cast<long long>(time.count()));
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    try {
        measureStart();
        measureRest();
        measureTakes();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "dictation_bench: %s\n", error.what());
        return 1;
    }
    return 0;
}
