// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/kde/KwinKeySight.h"

#include "base/IniEdit.h"

#include <QFile>
#include <QStandardPaths>

namespace lorvane {

namespace {

/// As the setting has it, by name or number: none, modifiers, combinations, all. Combinations show what is
/// typed with a modifier besides, and lose the same releases.
XKeySight sightOf(const QByteArray& value) {
    const QByteArray word = value.trimmed().toLower();
    if (word == "modifiers" || word == "combinations" || word == "1" || word == "2") {
        return XKeySight::modifiers;
    }
    return word == "all" || word == "3" ? XKeySight::everything : XKeySight::none;
}

} // namespace

KwinKeySight::KwinKeySight(QDBusConnection session, QStringList files)
    : session_(std::move(session)), files_(std::move(files)), sight_(read()) {
    session_.connect(QString(), QStringLiteral("/kwinrc"), QStringLiteral("org.kde.kconfig.notify"),
                     QStringLiteral("ConfigChanged"), this, SLOT(look()));
    session_.connect(QString(), QStringLiteral("/KWin"), QStringLiteral("org.kde.KWin"),
                     QStringLiteral("reloadConfig"), this, SLOT(look()));
}

QStringList KwinKeySight::settingsFiles() {
    QStringList files = QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation);
    for (QString& file : files) {
        file += QStringLiteral("/kwinrc");
    }
    return files;
}

XKeySight KwinKeySight::read() const {
    for (const QString& path : files_) {
        QFile file(path);
        const QByteArray content = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        if (const auto line = iniLine(content, "Xwayland", "XwaylandEavesdrops")) {
            return sightOf(line->mid(line->indexOf('=') + 1));
        }
    }
    return XKeySight::none;
}

void KwinKeySight::look() {
    const XKeySight sight = read();
    if (sight != sight_) {
        sight_ = sight;
        changed_.emit();
    }
}

} // namespace lorvane
