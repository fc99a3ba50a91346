// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/UserSession.h"

#include "support/SessionHands.h"
#include "support/Wait.h"

#include <stdexcept>
#include <utility>

#include <QtCore/QDir>
#include <QtCore/QFile>

namespace lorvane::session {

namespace {

// The program's command with the folders of the session, which a suite has others than.
ToolResult runProgram(const QStringList& arguments) {
    const QString home = QDir::homePath();
    const QStringList folders{QStringLiteral("XDG_CONFIG_HOME=") + home + QStringLiteral("/.config"),
                              QStringLiteral("XDG_DATA_HOME=") + home + QStringLiteral("/.local/share"),
                              QStringLiteral("XDG_CACHE_HOME=") + home + QStringLiteral("/.cache"),
                              QStringLiteral(LORVANE_PROGRAM)};
    return runTool(QStringLiteral("env"), folders + arguments);
}

// KWin starts the input method a moment later, and lets the program press keys when it has read the entries.
void chooseInputMethod() {
    const ToolResult done =
        runProgram({QStringLiteral("setup"), QStringLiteral("typing"), QStringLiteral("--yes")});
    const QString socket = qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/lorvane-input-method");
    if (done.status != 0 || !waitUntil([&] { return QFile::exists(socket); }))
        throw std::runtime_error("lorvane setup typing: " + (done.output + done.errors).toStdString());
    if (!waitUntil([] { return runProgram({QStringLiteral("doctor")}).output.contains("KWin fake input"); }))
        throw std::runtime_error("KWin lets the program press no keys");
}

} // namespace

QString name() { return qEnvironmentVariable("LORVANE_SESSION"); }

bool isWayland() { return hands::areThere(); }

void makeFullscreen(quint32 window, bool wanted) {
    hands::ask({QStringLiteral("fullscreen"), static_cast<qint64>(window), wanted});
}

void click(const QPoint& place) {
    hands::ask({QStringLiteral("point"), place.x(), place.y()});
    for (const bool down : {true, false})
        hands::ask({QStringLiteral("button"), down});
}

QString takePicture(const QString& name) {
    QString path = qEnvironmentVariable("LORVANE_PICTURES") + QChar(u'/') + name + QStringLiteral(".png");
    hands::ask({QStringLiteral("picture"), path});
    return path;
}

bool compositorHasCopied(const QString& type) {
    return name() != QStringLiteral("gnome") ||
           hands::ask({QStringLiteral("clipboard")}).toArray().contains(type);
}

qint64 compositor() { return hands::ask({QStringLiteral("compositor")}).toInteger(); }

void beSetUp() {
    static bool isDone = false;
    if (std::exchange(isDone, true))
        return;
    if (name() == QStringLiteral("gnome"))
        hands::ask({QStringLiteral("extension"), QStringLiteral(LORVANE_SHELL_EXTENSION)});
    if (name() == QStringLiteral("kwin"))
        chooseInputMethod();
}

void showModifiersToX(bool wanted) {
    const ToolResult done = runProgram({QStringLiteral("setup"), QStringLiteral("hold"),
                                        wanted ? QStringLiteral("--yes") : QStringLiteral("--undo")});
    if (done.status != 0)
        throw std::runtime_error("lorvane setup hold: " + (done.output + done.errors).toStdString());
}

} // namespace lorvane::session
