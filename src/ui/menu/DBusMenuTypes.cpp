// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/menu/DBusMenuTypes.h"

#include <QDBusMetaType>

namespace lorvane {

namespace {

template <typename... Members>
void write(QDBusArgument& argument, const Members&... members) {
    argument.beginStructure();
    (argument << ... << members);
    argument.endStructure();
}

template <typename... Members>
void read(const QDBusArgument& argument, Members&... members) {
    argument.beginStructure();
    (argument >> ... >> members);
    argument.endStructure();
}

} // namespace

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuItem& item) {
    write(argument, item.id, item.properties);
    return argument;
}
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuItem& item) {
    read(argument, item.id, item.properties);
    return argument;
}

// Children travel as variants, each with an item like this one inside.
QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuLayout& item) {
    QList<QDBusVariant> children;
    for (const DBusMenuLayout& child : item.children) {
        children.append(QDBusVariant(QVariant::fromValue(child)));
    }
    argument.beginStructure();
    argument << item.id << item.properties;
    argument.beginArray(QMetaType::fromType<QDBusVariant>());
    for (const QDBusVariant& child : children) {
        argument << child;
    }
    argument.endArray();
    argument.endStructure();
    return argument;
}
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuLayout& item) {
    argument.beginStructure();
    argument >> item.id >> item.properties;
    argument.beginArray();
    while (!argument.atEnd()) {
        QDBusVariant child;
        argument >> child;
        item.children.append(qdbus_cast<DBusMenuLayout>(child.variant().value<QDBusArgument>()));
    }
    argument.endArray();
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuEvent& event) {
    write(argument, event.id, event.name, event.data, event.timestamp);
    return argument;
}
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuEvent& event) {
    read(argument, event.id, event.name, event.data, event.timestamp);
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuRemoval& removal) {
    write(argument, removal.id, removal.properties);
    return argument;
}
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuRemoval& removal) {
    read(argument, removal.id, removal.properties);
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const StatusPixmap& pixmap) {
    write(argument, pixmap.width, pixmap.height, pixmap.bytes);
    return argument;
}
const QDBusArgument& operator>>(const QDBusArgument& argument, StatusPixmap& pixmap) {
    read(argument, pixmap.width, pixmap.height, pixmap.bytes);
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const StatusToolTip& tip) {
    write(argument, tip.icon, tip.pixmaps, tip.title, tip.text);
    return argument;
}
const QDBusArgument& operator>>(const QDBusArgument& argument, StatusToolTip& tip) {
    read(argument, tip.icon, tip.pixmaps, tip.title, tip.text);
    return argument;
}

void registerTrayTypes() {
    qDBusRegisterMetaType<DBusMenuItem>();
    qDBusRegisterMetaType<DBusMenuItems>();
    qDBusRegisterMetaType<DBusMenuLayout>();
    qDBusRegisterMetaType<DBusMenuEvent>();
    qDBusRegisterMetaType<DBusMenuEvents>();
    qDBusRegisterMetaType<DBusMenuRemoval>();
    qDBusRegisterMetaType<DBusMenuRemovals>();
    qDBusRegisterMetaType<StatusPixmap>();
    qDBusRegisterMetaType<StatusPixmaps>();
    qDBusRegisterMetaType<StatusToolTip>();
}

} // namespace lorvane
