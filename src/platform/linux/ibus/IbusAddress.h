// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

namespace lorvane {

/// Where the running IBus daemon may have left its address, likeliest first: a file for the Wayland display
/// and one for the X display, as libibus names them.
struct IbusAddressPlaces {
    /// An address that is given outright; then there are no files to look at.
    QString address;
    QStringList files;
    /// The folder of the files, whether it exists or not.
    QString folder;
};

/// `configFolder`: the folder of per-user settings; `machineId`: as in /etc/machine-id.
[[nodiscard]] IbusAddressPlaces ibusAddressPlaces(const QProcessEnvironment& environment,
                                                  const QString& configFolder, const QString& machineId);
/// Those of this process.
[[nodiscard]] IbusAddressPlaces ibusAddressPlaces();
/// The address in such a file; empty when there is none.
[[nodiscard]] QString addressInFile(const QByteArray& content);

} // namespace lorvane
