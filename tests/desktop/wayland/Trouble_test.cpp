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
using OtherInputMethod = LiveTypingDesk;

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

TEST_F(OtherInputMethod, HasABrowserTypedIntoByAnotherRoad) {
    QProcess theirs;
    theirs.start(QStringLiteral(HOLD_INPUT_METHOD), {});
    ASSERT_TRUE(theirs.waitForStarted());
    ASSERT_TRUE(waitUntil([&] { return theirs.canReadLine(); })) << theirs.readAllStandardError().data();
    ASSERT_EQ(theirs.readLine(), "it is ours\n");
    startProgram();
    const auto browser = DesktopApp::chromium(own);
    LiveStream stream = dictate();
    const QString text = QStringLiteral("Typed beside another input method — ещё раз.");
    EXPECT_TRUE(isTyped(stream, text, *browser)) << program->log().toStdString();
    stream.finish(text);
    EXPECT_TRUE(goesThrough(delivered));
    EXPECT_TRUE(holds(*browser, own + text));
    EXPECT_EQ(theirs.state(), QProcess::Running);
    theirs.kill();
    theirs.waitForFinished();
}

} // namespace

} // namespace lorvane
