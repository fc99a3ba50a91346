// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Wait.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QEventLoop>
#include <QtCore/QProcess>
#include <QtCore/QTimer>

namespace lorvane {

namespace {
constexpr std::chrono::milliseconds lookAgain{10};
} // namespace

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds bound) {
    const QDeadlineTimer deadline(bound);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QEventLoop loop;
        QTimer::singleShot(lookAgain, &loop, &QEventLoop::quit);
        loop.exec();
    }
    return true;
}

ToolResult runTool(const QString& program, const QStringList& arguments, std::chrono::milliseconds bound) {
    QProcess process;
    QEventLoop loop;
    QObject::connect(&process, &QProcess::finished, &loop, &QEventLoop::quit);
    QObject::connect(&process, &QProcess::errorOccurred, &loop, &QEventLoop::quit);
    QTimer::singleShot(bound, &loop, &QEventLoop::quit);
    process.start(program, arguments, QIODevice::ReadOnly);
    if (process.state() != QProcess::NotRunning)
        loop.exec();
    const bool ended = process.state() == QProcess::NotRunning && process.error() == QProcess::UnknownError &&
                       process.exitStatus() == QProcess::NormalExit;
    if (process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished();
    }
    return {ended ? process.exitCode() : -1, process.readAllStandardOutput(), process.readAllStandardError()};
}

} // namespace lorvane
