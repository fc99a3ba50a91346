// SPDX-License-Identifier: GPL-3.0-or-later
// What the session takes away from the program.
#include "desktop/program/LiveTypingDesk.h"
#include "support/Corpus.h"
#include "support/UserSession.h"

#include <csignal>

#include <QtCore/QFile>

namespace lorvane {

namespace {

using CompositorKilled = LiveTypingDesk;
using XWaylandKilled = DictationDesk;

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

TEST_F(CompositorKilled, InTheMiddleOfATakeLosesNothing) {
    const auto editor = DesktopApp::mousepad();
    startProgram();
    LiveStream stream = dictate();
    const QString text = QStringLiteral("Spoken before the screen went away.");
    stream.say(corpus::fragments(text));
    // Should the take be sent once more, in whichever way, it is answered with the same.
    backend.scriptAnew("/api/dictate", answer::response(text));
    backend.scriptAnew("/api/dictate-stream", answer::done(text));
    const auto compositor = static_cast<pid_t>(session::compositor());
    ASSERT_EQ(::kill(compositor, SIGKILL), 0);
    stream.finish(text);
    EXPECT_TRUE(waitUntil([&] { return contentOf(program->historyFile()).contains(text.toUtf8()); }))
        << program->log().toStdString() << program->output().toStdString();
    // It may go with its display, but in good order.
    EXPECT_TRUE(program->isRunning() || program->exitCode() == 1) << program->exitCode();
}

/// The compositor's own child; 0 when there is none.
pid_t xWayland() {
    const QString compositor = QString::number(session::compositor());
    const QByteArray children =
        contentOf(QStringLiteral("/proc/%1/task/%1/children").arg(compositor)).simplified();
    for (const QByteArray& child : children.split(' ')) {
        const QString command = QStringLiteral("/proc/%1/comm").arg(QString::fromLatin1(child));
        if (contentOf(command).trimmed() == "Xwayland") {
            return child.toInt();
        }
    }
    return 0;
}

TEST_F(XWaylandKilled, InTheMiddleOfATakeKeepsTheTakeAndTheProgramComesBack) {
    const auto editor = DesktopApp::mousepad();
    const QString text = QStringLiteral("Spoken before the X server went away.");
    startHearing(text);
    backend.scriptAnew("/api/dictate", answer::response(text));
    hand.press(holdKey);
    ASSERT_TRUE(program->waitForPhase(QStringLiteral("recording")));
    stay(std::chrono::milliseconds(1200));
    const pid_t server = xWayland();
    ASSERT_GT(server, 0);
    ASSERT_EQ(::kill(server, SIGKILL), 0);
    EXPECT_TRUE(waitUntil([&] { return !program->isRunning(); }));
    hand.release(holdKey);
    EXPECT_TRUE(program->output().contains(QStringLiteral("starting anew")))
        << program->output().toStdString();
    EXPECT_TRUE(waitUntil([&] { return contentOf(program->historyFile()).contains(text.toUtf8()); }))
        << program->log().toStdString() << program->output().toStdString();
    // The next process has the keys, with or without an X server by then.
    EXPECT_TRUE(waitUntil([&] { return program->log().count(QStringLiteral("key 62 comes by ")) > 1; }))
        << program->log().toStdString();
    EXPECT_EQ(program->run({QStringLiteral("quit")}), 0);
}

} // namespace

} // namespace lorvane
