// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/ibus/IbusBus.h"

#include "platform/linux/ibus/IbusValues.h"

#include <QDBusPendingCallWatcher>
#include <QDir>
#include <QFile>
#include <QUuid>

#include <algorithm>

namespace lorvane {

namespace {

const QString busService = QStringLiteral("org.freedesktop.DBus");
const QString busPath = QStringLiteral("/org/freedesktop/DBus");
constexpr Duration greetingBound = std::chrono::seconds(5);

int milliseconds(Duration bound) {
    return static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(bound).count());
}

} // namespace

IbusBus::IbusBus(IbusAddressPlaces places, QDBusVirtualObject& served)
    : places_(std::move(places)), served_(served),
      connectionName_(QStringLiteral("lorvane-ibus-") + QUuid::createUuid().toString(QUuid::WithoutBraces)),
      connection_(connectionName_) {
    ibus::registerTypes();
    connect(&watcher_, &QFileSystemWatcher::directoryChanged, this, [this] { look(); });
    look();
}

IbusBus::~IbusBus() {
    watcher_.disconnect(this);
    close();
}

QString IbusBus::addressNow() const {
    if (!places_.address.isEmpty()) {
        return places_.address;
    }
    for (const QString& path : places_.files) {
        QFile file(path);
        const QString address = file.open(QIODevice::ReadOnly) ? addressInFile(file.readAll()) : QString();
        if (!address.isEmpty()) {
            return address;
        }
    }
    return {};
}

void IbusBus::look() {
    watchFolder();
    const QString address = addressNow();
    if (address.isEmpty() || (address == openAddress_ && connection_.isConnected())) {
        return;
    }
    const bool wasConnected = isConnected_;
    close();
    if (wasConnected) {
        changed_.emit();
    }
    open(address);
}

/// The folder itself, or the nearest one above it that is there.
void IbusBus::watchFolder() {
    QString folder = places_.folder;
    while (!QDir(folder).exists() && folder.size() > 1) {
        folder = QDir::cleanPath(folder + QStringLiteral("/.."));
    }
    const QStringList watched = watcher_.directories();
    if (watched != QStringList{folder}) {
        if (!watched.isEmpty()) {
            watcher_.removePaths(watched);
        }
        watcher_.addPath(folder);
    }
}

void IbusBus::open(const QString& address) {
    openAddress_ = address;
    // As to a peer: connecting to a bus waits for the bus.
    connection_ = QDBusConnection::connectToPeer(address, connectionName_);
    if (!connection_.isConnected()) {
        close();
        return;
    }
    connection_.registerVirtualObject(ibus::path, &served_, QDBusConnection::SubPath);
    connection_.connect(QString(), QString(), QStringLiteral("org.freedesktop.DBus.Local"),
                        QStringLiteral("Disconnected"), this, SLOT(lost()));
    greet();
}

void IbusBus::greet() {
    auto hello = QDBusMessage::createMethodCall(busService, busPath, busService, QStringLiteral("Hello"));
    auto* const watcher =
        new QDBusPendingCallWatcher(connection_.asyncCall(hello, milliseconds(greetingBound)), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, address = openAddress_] {
        watcher->deleteLater();
        const bool isAnswer = watcher->reply().type() == QDBusMessage::ReplyMessage;
        if (isAnswer && address == openAddress_) {
            isConnected_ = true;
            changed_.emit();
        }
    });
}

void IbusBus::close() {
    isConnected_ = false;
    openAddress_.clear();
    connection_ = QDBusConnection(connectionName_);
    QDBusConnection::disconnectFromPeer(connectionName_);
}

void IbusBus::lost() {
    const bool wasConnected = isConnected_;
    close();
    if (wasConnected) {
        changed_.emit();
    }
}

void IbusBus::follow(const QString& interface, const QString& member, QObject* receiver, const char* slot) {
    connection_.connect(QString(), QString(), interface, member, receiver, slot);
    const QString rule = QStringLiteral("type='signal',interface='%1',member='%2'").arg(interface, member);
    const auto following =
        callOn(busService, busPath, busService, QStringLiteral("AddMatch"), {rule}, greetingBound);
    Q_UNUSED(following)
}

Completion<QDBusMessage> IbusBus::call(const QString& method, const QVariantList& arguments, Duration bound) {
    const bool isProperty = method == QLatin1String("Get");
    return callOn(ibus::service, ibus::path,
                  isProperty ? QStringLiteral("org.freedesktop.DBus.Properties") : ibus::service, method,
                  arguments, bound);
}

Completion<QDBusMessage> IbusBus::callOn(const QString& service, const QString& path,
                                         const QString& interface, const QString& method,
                                         const QVariantList& arguments, Duration bound) {
    auto message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    Completion<QDBusMessage> answer;
    auto* const watcher =
        new QDBusPendingCallWatcher(connection_.asyncCall(message, milliseconds(bound)), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, answer] {
        watcher->deleteLater();
        answer.complete(watcher->reply());
    });
    return answer;
}

void IbusBus::send(const QDBusMessage& message) { connection_.send(message); }

} // namespace lorvane
