// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusArgument>
#include <QList>
#include <QString>
#include <QVariant>
#include <QVariantMap>

#include <optional>

namespace lorvane {

/// One shortcut on the wire: (sa{sv}).
struct PortalShortcut {
    QString id;
    QVariantMap properties;
};

QDBusArgument& operator<<(QDBusArgument& argument, const PortalShortcut& shortcut);
const QDBusArgument& operator>>(const QDBusArgument& argument, PortalShortcut& shortcut);

/// The list as an argument of a call.
[[nodiscard]] QVariant asArgument(const QList<PortalShortcut>& shortcuts);
/// The list in an answer; nothing when it is none.
[[nodiscard]] std::optional<QList<PortalShortcut>> shortcutsFrom(const QVariant& value);

/// A name of the preference "tirra.linux.extraKey" in the words of XDG's paper on shortcuts, which
/// uses the names of key symbols; empty for a name that is none.
[[nodiscard]] QString triggerFor(const QString& extraKey);

} // namespace lorvane

Q_DECLARE_METATYPE(lorvane::PortalShortcut)
