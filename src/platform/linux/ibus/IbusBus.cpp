// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/ibus/IbusBus.h"

#include <QDir>
#include <QFile>

namespace lorvane {

IbusBus::IbusBus(IbusAddressPlaces places) : places_(std::move(places)) {
    connect(&watcher_, &QFileSystemWatcher::directoryChanged, this, [this] { look(); });
    look();
}

QString IbusBus::addressNow() const {
    if (!places_.address.isEmpty()) {
        return places_.address;
    }
    for (const QString& path : places_.files) {
        QFile file(path);
        QString address = file.open(QIODevice::ReadOnly) ? addressInFile(file.readAll()) : QString();
        if (!address.isEmpty()) {
            return address;
        }
    }
    return {};
}

void IbusBus::look() {
    watchFolder();
    const QString address = addressNow();
    if (address.isEmpty() || (address == address_ && link_ && !link_->isLost())) {
        return;
    }
    address_ = address;
    link_ = std::make_unique<IbusLink>(address);
    linkChange_ = link_->onChange([this] { linkChanged(); });
    linkChanged();
}

void IbusBus::linkChanged() {
    if (isConnected() != wasConnected_) {
        wasConnected_ = isConnected();
        changed_.emit();
    }
}

/// The folder itself, or the nearest one above it that is there.
void IbusBus::watchFolder() {
    QString folder = places_.folder;
    while (!QDir(folder).exists() && folder.size() > 1) {
        folder = QDir::cleanPath(folder + QStringLiteral("/.."));
    }
    const QStringList watched = watcher_.directories();
    if (watched != QStringList{folder}) {
        if (!watched.isEmpty()) {
            watcher_.removePaths(watched);
        }
        watcher_.addPath(folder);
    }
}

} // namespace lorvane
