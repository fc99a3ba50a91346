// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/atspi/ProgramKind.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace lorvane {

ProgramKind kindFrom(const QByteArray& maps, const QStringList& filesBeside) {
    // Chromium first: it maps Qt too where it was told to look like a Qt program.
    for (const auto& name : filesBeside) {
        if (name == QLatin1String("chrome_100_percent.pak") ||
            name == QLatin1String("v8_context_snapshot.bin") || name == QLatin1String("snapshot_blob.bin")) {
            return ProgramKind::chromium;
        }
    }
    for (const char* library : {"/libQt5Gui.so", "/libQt6Gui.so"}) {
        if (maps.contains(library)) {
            return ProgramKind::qt;
        }
    }
    return ProgramKind::unknown;
}

ProgramKind programKind(ProcessId process) {
    const QString folder = QStringLiteral("/proc/%1/").arg(process);
    QFile maps(folder + QStringLiteral("maps"));
    const QByteArray mapped = maps.open(QIODevice::ReadOnly) ? maps.readAll() : QByteArray();
    const QString program = QFile::symLinkTarget(folder + QStringLiteral("exe"));
    const QDir home = QFileInfo(program).dir();
    return kindFrom(mapped, program.isEmpty() ? QStringList() : home.entryList(QDir::Files));
}

} // namespace lorvane
