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

/// A link stays a link: its target is written.
QString targetOf(const QString& path) {
    const QFileInfo info(path);
    return info.isSymLink() ? info.symLinkTarget() : path;
}

} // namespace

Result<std::optional<QByteArray>, QString> DiskSetupWorld::read(const QString& path) const {
    QFile file(path);
    if (!QFileInfo::exists(path) && !QFileInfo(path).isSymLink()) {
        return std::optional<QByteArray>();
    }
    if (!file.open(QIODevice::ReadOnly)) {
        return failure(file.errorString());
    }
    QByteArray content = file.readAll();
    if (file.error() != QFile::NoError) {
        return failure(file.errorString());
    }
    return std::optional(std::move(content));
}

QStringList DiskSetupWorld::foldersToMake(const QString& path) const {
    QStringList folders;
    for (QFileInfo folder(targetOf(path)); !(folder = QFileInfo(folder.path())).exists();) {
        folders.prepend(folder.filePath());
    }
    return folders;
}

bool DiskSetupWorld::write(const QString& path, const QByteArray& content) {
    const QString target = targetOf(path);
    if (!QDir().mkpath(QFileInfo(target).path())) {
        return false;
    }
    QSaveFile file(target);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.commit();
}

bool DiskSetupWorld::remove(const QString& path, const QStringList& folders) {
    if (QFile::exists(path) && !QFile::remove(path)) {
        return false;
    }
    for (auto folder = folders.rbegin(); folder != folders.rend(); ++folder) {
        QDir().rmdir(*folder);
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
