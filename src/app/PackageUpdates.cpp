// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/PackageUpdates.h"

#include <QCoreApplication>

namespace lorvane {

void PackageUpdates::checkForUpdates() {
    tell_(words_.text("This is Lorvane %1. Newer versions come with your system's updates.")
              .arg(QCoreApplication::applicationVersion()));
}

} // namespace lorvane
