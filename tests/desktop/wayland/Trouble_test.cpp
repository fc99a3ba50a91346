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

} // namespace

} // namespace lorvane
