// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/setup/DiskSetupWorld.h"

#include "app/setup/SetupProbe.h"
#include "platform/linux/evdev/EvdevHoldRoad.h"
#include "platform/linux/portal/PortalKeyboard.h"

#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSaveFile>

namespace lorvane {

namespace {

constexpr int programPatience = 10000; // milliseconds

} // namespace

std::optional<QByteArray> DiskSetupWorld::read(const QString& path) const {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? std::optional(file.readAll()) : std::nullopt;
}

// A link stays a link: its target is written.
bool DiskSetupWorld::write(const QString& path, const QByteArray& content) {
    const QFileInfo info(path);
    const QString target = info.isSymLink() ? info.symLinkTarget() : path;
    if (!QDir().mkpath(QFileInfo(target).path())) {
        return false;
    }
    QSaveFile file(target);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.commit();
}

bool DiskSetupWorld::remove(const QString& path) {
    if (QFile::exists(path) && !QFile::remove(path)) {
        return false;
    }
    const QDir folder = QFileInfo(path).dir();
    if (folder.isEmpty()) {
        folder.rmdir(folder.path());
    }
    return true;
}

std::optional<QByteArray> DiskSetupWorld::run(const QStringList& command) {
    QProcess process;
    process.start(command.first(), command.mid(1), QIODevice::ReadOnly);
    const bool ended = process.waitForStarted() && process.waitForFinished(programPatience);
    return ended && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0
               ? std::optional(process.readAllStandardOutput())
               : std::nullopt;
}

QString DiskSetupWorld::placeShellExtension(bool wanted) {
    ShellExtensionSetup extension = shellExtension(session_);
    return wanted ? extension.install() : extension.remove();
}

void DiskSetupWorld::switchDevices(bool on) {
    if (on) {
        foundation_.preferences.set(readKeyDevices, true);
    } else {
        foundation_.preferences.remove(readKeyDevices);
    }
}

bool DiskSetupWorld::askPortal(bool allow) {
    if (!allow) {
        foundation_.preferences.remove(remoteDesktopToken);
        return true;
    }
    PortalKeyboard keyboard(foundation_, session_);
    QEventLoop loop;
    bool allowed = false;
    const TaskHandle task = startTask([&](TaskScope scope) -> QCoro::Task<void> {
        allowed = co_await keyboard.ask(scope);
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    loop.exec();
    return allowed;
}

} // namespace lorvane
