// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/ibus/IbusLink.h"

#include "platform/linux/ibus/IbusValues.h"

#include <QDBusPendingCallWatcher>
#include <QUuid>

namespace lorvane {

namespace {

const QString busService = QStringLiteral("org.freedesktop.DBus");
const QString busPath = QStringLiteral("/org/freedesktop/DBus");
constexpr Duration greetingBound = std::chrono::seconds(5);

int milliseconds(Duration bound) {
    return static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(bound).count());
}

QDBusMessage callOfBus(const QString& method) {
    return QDBusMessage::createMethodCall(busService, busPath, busService, method);
}

} // namespace

// As to a peer: connecting to a bus waits for the bus.
IbusLink::IbusLink(const QString& address, QDBusVirtualObject* served)
    : name_(QStringLiteral("lorvane-ibus-") + QUuid::createUuid().toString(QUuid::WithoutBraces)),
      connection_(QDBusConnection::connectToPeer(address, name_)), isLost_(!connection_.isConnected()) {
    ibus::registerTypes();
    if (isLost_) {
        return;
    }
    if (served != nullptr) {
        connection_.registerVirtualObject(ibus::path, served, QDBusConnection::SubPath);
    }
    connection_.connect(QString(), QString(), QStringLiteral("org.freedesktop.DBus.Local"),
                        QStringLiteral("Disconnected"), this, SLOT(lose()));
    greet();
}

IbusLink::~IbusLink() {
    connection_ = QDBusConnection(QString());
    QDBusConnection::disconnectFromPeer(name_);
}

void IbusLink::greet() {
    auto* const watcher = new QDBusPendingCallWatcher(
        connection_.asyncCall(callOfBus(QStringLiteral("Hello")), milliseconds(greetingBound)), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        if (watcher->reply().type() != QDBusMessage::ReplyMessage) {
            lose();
        } else if (!isLost_) {
            isConnected_ = true;
            changed_.emit();
        }
    });
}

void IbusLink::lose() {
    if (!isLost_) {
        isLost_ = true;
        isConnected_ = false;
        changed_.emit();
    }
}

Completion<QDBusMessage> IbusLink::call(const QString& method, const QVariantList& arguments,
                                        Duration bound) {
    return send(QDBusMessage::createMethodCall(ibus::service, ibus::path, ibus::service, method), arguments,
                bound);
}

Completion<QDBusMessage> IbusLink::property(const QString& name, Duration bound) {
    const auto get = QDBusMessage::createMethodCall(
        ibus::service, ibus::path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    return send(get, {ibus::service, name}, bound);
}

Completion<QDBusMessage> IbusLink::send(QDBusMessage message, const QVariantList& arguments, Duration bound) {
    message.setArguments(arguments);
    Completion<QDBusMessage> answer;
    auto* const watcher =
        new QDBusPendingCallWatcher(connection_.asyncCall(message, milliseconds(bound)), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, answer] {
        watcher->deleteLater();
        answer.complete(watcher->reply());
    });
    // The link may end first.
    connect(watcher, &QObject::destroyed, watcher, [answer] { answer.complete(QDBusMessage()); });
    return answer;
}

void IbusLink::follow(const QString& interface, const QString& member, QObject* receiver, const char* slot) {
    connection_.connect(QString(), QString(), interface, member, receiver, slot);
    const QString rule = QStringLiteral("type='signal',interface='%1',member='%2'").arg(interface, member);
    const auto following = send(callOfBus(QStringLiteral("AddMatch")), {rule}, greetingBound);
    Q_UNUSED(following)
}

} // namespace lorvane
