// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/portal/PortalShortcuts.h"

#include <QDBusMetaType>
#include <QRegularExpression>

namespace lorvane {

QDBusArgument& operator<<(QDBusArgument& argument, const PortalShortcut& shortcut) {
    argument.beginStructure();
    argument << shortcut.id << shortcut.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, PortalShortcut& shortcut) {
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.properties;
    argument.endStructure();
    return argument;
}

QVariant asArgument(const QList<PortalShortcut>& shortcuts) {
    qDBusRegisterMetaType<PortalShortcut>();
    qDBusRegisterMetaType<QList<PortalShortcut>>();
    return QVariant::fromValue(shortcuts);
}

std::optional<QList<PortalShortcut>> shortcutsFrom(const QVariant& value) {
    if (value.userType() != qMetaTypeId<QDBusArgument>()) {
        return std::nullopt;
    }
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("a(sa{sv})")) {
        return std::nullopt;
    }
    return qdbus_cast<QList<PortalShortcut>>(argument);
}

QString triggerFor(const QString& extraKey) {
    static const QRegularExpression functionKey(QStringLiteral("^F(1[3-9]|2[0-4])$"));
    if (extraKey == QLatin1String("ScrollLock")) {
        return QStringLiteral("Scroll_Lock");
    }
    const bool isItsOwnName = extraKey == QLatin1String("Menu") || extraKey == QLatin1String("Pause") ||
                              functionKey.match(extraKey).hasMatch();
    return isItsOwnName ? extraKey : QString();
}

} // namespace lorvane
