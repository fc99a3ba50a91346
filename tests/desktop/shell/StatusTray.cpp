// SPDX-License-Identifier: GPL-3.0-or-later
#include "StatusTray.h"

#include "support/SessionBus.h"
#include "support/Wait.h"

#include <QDBusArgument>
#include <QDBusMessage>

#include <stdexcept>

namespace lorvane {

namespace {

const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString connectionName = QStringLiteral("status-tray");
const QString menuInterface = QStringLiteral("com.canonical.dbusmenu");

TrayEntry readEntry(const QDBusArgument& argument) {
    TrayEntry entry;
    argument.beginStructure();
    argument >> entry.id >> entry.properties;
    argument.beginArray();
    while (!argument.atEnd()) {
        QDBusVariant child;
        argument >> child;
        entry.children.append(readEntry(child.variant().value<QDBusArgument>()));
    }
    argument.endArray();
    argument.endStructure();
    return entry;
}

QDBusMessage ask(const QDBusMessage& message) { return askOnSessionBus(message, std::chrono::seconds(5)); }

QString menuPathOf(const QVariant& path) { return path.value<QDBusObjectPath>().path(); }

} // namespace

StatusTray::StatusTray(bool hasHost)
    : hasHost_(hasHost), bus_(QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName)) {
    new StatusTrayAdaptor(this);
    if (!bus_.registerObject(QStringLiteral("/StatusNotifierWatcher"), this) ||
        !bus_.registerService(watcherName)) {
        throw std::runtime_error("there is a tray already");
    }
}

StatusTray::~StatusTray() {
    bus_.unregisterService(watcherName);
    bus_.unregisterObject(QStringLiteral("/StatusNotifierWatcher"));
    QDBusConnection::disconnectFromBus(connectionName);
}

void StatusTray::setHost(bool hasHost) {
    hasHost_ = hasHost;
    auto* const adaptor = findChild<StatusTrayAdaptor*>();
    if (hasHost) {
        Q_EMIT adaptor->StatusNotifierHostRegistered();
    } else {
        Q_EMIT adaptor->StatusNotifierHostUnregistered();
    }
}

QVariant TrayMenu::itemProperty(const QString& name) const {
    auto question = QDBusMessage::createMethodCall(service_, QStringLiteral("/StatusNotifierItem"),
                                                   QStringLiteral("org.freedesktop.DBus.Properties"),
                                                   QStringLiteral("Get"));
    question << QStringLiteral("org.kde.StatusNotifierItem") << name;
    const QDBusMessage reply = ask(question);
    return reply.arguments().value(0).value<QDBusVariant>().variant();
}

TrayEntry TrayMenu::read() const {
    auto question = QDBusMessage::createMethodCall(service_, menuPathOf(itemProperty(QStringLiteral("Menu"))),
                                                   menuInterface, QStringLiteral("GetLayout"));
    question << 0 << -1 << QStringList();
    const QDBusMessage reply = ask(question);
    if (reply.signature() != QLatin1String("u(ia{sv}av)")) {
        throw std::runtime_error("not a menu: " + (reply.signature() + reply.errorMessage()).toStdString());
    }
    return readEntry(reply.arguments().at(1).value<QDBusArgument>());
}

QStringList TrayMenu::labels() const {
    QStringList labels;
    for (const TrayEntry& entry : read().children) {
        const bool isDivider = entry.properties.value(QStringLiteral("type")) == QLatin1String("separator");
        labels.append(isDivider ? QStringLiteral("-") : entry.label());
    }
    return labels;
}

TrayEntry TrayMenu::entry(const QStringList& path) const {
    TrayEntry at = read();
    for (const QString& label : path) {
        TrayEntry next;
        for (const TrayEntry& child : std::as_const(at.children)) {
            if (child.label() == label) {
                next = child;
            }
        }
        if (next.id == 0) {
            return {};
        }
        at = next;
    }
    return at;
}

bool TrayMenu::click(const QStringList& path) const {
    const int id = entry(path).id;
    if (id == 0) {
        return false;
    }
    auto click = QDBusMessage::createMethodCall(service_, menuPathOf(itemProperty(QStringLiteral("Menu"))),
                                                menuInterface, QStringLiteral("Event"));
    click << id << QStringLiteral("clicked") << QVariant::fromValue(QDBusVariant(QString())) << 0U;
    return ask(click).type() == QDBusMessage::ReplyMessage;
}

} // namespace lorvane
