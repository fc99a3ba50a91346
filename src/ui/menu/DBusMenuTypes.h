// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusArgument>
#include <QDBusVariant>
#include <QList>
#include <QStringList>
#include <QVariantMap>

namespace lorvane {

/// What goes over the bus in com.canonical.dbusmenu.
struct DBusMenuItem {
    int id = 0;
    QVariantMap properties;
};
using DBusMenuItems = QList<DBusMenuItem>;

struct DBusMenuLayout {
    int id = 0;
    QVariantMap properties;
    QList<DBusMenuLayout> children;
};

struct DBusMenuEvent {
    int id = 0;
    QString name;
    QDBusVariant data;
    quint32 timestamp = 0;
};
using DBusMenuEvents = QList<DBusMenuEvent>;

struct DBusMenuRemoval {
    int id = 0;
    QStringList properties;
};
using DBusMenuRemovals = QList<DBusMenuRemoval>;

/// A picture of org.kde.StatusNotifierItem: ARGB32, the highest byte first.
struct StatusPixmap {
    int width = 0;
    int height = 0;
    QByteArray bytes;
};
using StatusPixmaps = QList<StatusPixmap>;

struct StatusToolTip {
    QString icon;
    StatusPixmaps pixmaps;
    QString title;
    QString text;
};

/// Makes them known to Qt; again does nothing.
void registerTrayTypes();

} // namespace lorvane

Q_DECLARE_METATYPE(lorvane::DBusMenuItem)
Q_DECLARE_METATYPE(lorvane::DBusMenuLayout)
Q_DECLARE_METATYPE(lorvane::DBusMenuEvent)
Q_DECLARE_METATYPE(lorvane::DBusMenuRemoval)
Q_DECLARE_METATYPE(lorvane::StatusPixmap)
Q_DECLARE_METATYPE(lorvane::StatusToolTip)
