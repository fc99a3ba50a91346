// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/ibus/IbusAddress.h"

#include <QFileInfo>
#include <QList>
#include <QStandardPaths>
#include <QSysInfo>

namespace lorvane {

namespace {

/// ":1.0" and "host:1" as the parts of a file's name; empty for what is no display.
QString nameOfXDisplay(const QString& display) {
    const qsizetype colon = display.lastIndexOf(QLatin1Char(':'));
    if (colon < 0) {
        return {};
    }
    const QString host = colon == 0 ? QStringLiteral("unix") : display.left(colon);
    const QString number = display.mid(colon + 1).section(QLatin1Char('.'), 0, 0);
    return number.isEmpty() ? QString() : host + QLatin1Char('-') + number;
}

} // namespace

IbusAddressPlaces ibusAddressPlaces(const QProcessEnvironment& environment, const QString& configFolder,
                                    const QString& machineId) {
    IbusAddressPlaces places;
    places.address = environment.value(QStringLiteral("IBUS_ADDRESS"));
    places.folder = configFolder + QStringLiteral("/ibus/bus");
    const QString named = environment.value(QStringLiteral("IBUS_ADDRESS_FILE"));
    if (!named.isEmpty()) {
        places.files.append(named);
        places.folder = QFileInfo(named).path();
        return places;
    }
    const QString stem = places.folder + QLatin1Char('/') + machineId + QLatin1Char('-');
    const QString wayland = environment.value(QStringLiteral("WAYLAND_DISPLAY"));
    if (!wayland.isEmpty()) {
        places.files.append(stem + QStringLiteral("unix-") + wayland);
    }
    const QString display = nameOfXDisplay(environment.value(QStringLiteral("DISPLAY")));
    if (!display.isEmpty()) {
        places.files.append(stem + display);
    }
    return places;
}

IbusAddressPlaces ibusAddressPlaces() {
    return ibusAddressPlaces(QProcessEnvironment::systemEnvironment(),
                             QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation),
                             QString::fromLatin1(QSysInfo::machineUniqueId()));
}

QString addressInFile(const QByteArray& content) {
    const QByteArray key = "IBUS_ADDRESS=";
    const QList<QByteArray> lines = content.split('\n');
    for (const QByteArray& line : lines) {
        if (line.startsWith(key)) {
            return QString::fromUtf8(line.mid(key.size()).trimmed());
        }
    }
    return {};
}

} // namespace lorvane
