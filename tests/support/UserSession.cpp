// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/UserSession.h"

#include "support/SessionHands.h"
#include "support/Wait.h"

#include <stdexcept>
#include <utility>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

namespace lorvane::session {

namespace {

QByteArray read(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("cannot read " + path.toStdString());
    return file.readAll();
}

// The entry that the package installs, with the program where this build has it.
void installDesktopEntry() {
    const QDir folder(qEnvironmentVariable("XDG_DATA_HOME") + QStringLiteral("/applications"));
    folder.mkpath(QStringLiteral("."));
    const QString packaged = QStringLiteral(LORVANE_DESKTOP_ENTRY);
    const QByteArray entry = read(packaged).replace("Exec=lorvane", "Exec=" LORVANE_PROGRAM);
    QFile file(folder.filePath(QFileInfo(packaged).fileName()));
    if (!file.open(QIODevice::WriteOnly) || file.write(entry) != entry.size())
        throw std::runtime_error("cannot write " + file.fileName().toStdString());
    file.close();
    if (runTool(QStringLiteral("kbuildsycoca5"), {}).status != 0)
        throw std::runtime_error("the desktop entries cannot be gathered");
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

qint64 compositor() { return hands::ask({QStringLiteral("compositor")}).toInteger(); }

void beSetUp() {
    static bool isDone = false;
    if (std::exchange(isDone, true))
        return;
    if (name() == QStringLiteral("gnome"))
        hands::ask({QStringLiteral("extension"), QStringLiteral(LORVANE_SHELL_EXTENSION)});
    if (name() == QStringLiteral("kwin"))
        installDesktopEntry();
}

} // namespace lorvane::session
