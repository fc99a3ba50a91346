// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Stores.h"

#include <QDir>
#include <QStandardPaths>

namespace lorvane {

namespace {

QString configFolder() { return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation); }

// $XDG_STATE_HOME, which this Qt has no name for; absent when there is no home either.
std::optional<QString> stateFolder() {
    const QString folder = qEnvironmentVariable("XDG_STATE_HOME");
    if (QDir::isAbsolutePath(folder)) {
        return folder;
    }
    const QString home = QDir::homePath();
    return home.isEmpty() || home == QLatin1String("/")
               ? std::nullopt
               : std::optional(home + QStringLiteral("/.local/state"));
}

} // namespace

Stores::Stores(DiagnosticLog::Console console)
    : log_(clock_, stateFolder(), std::move(console)), store_(configFolder(), log_),
      words_(loadWords(preferences_, log_)) {}

QString dataFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/Tirra");
}

} // namespace lorvane
