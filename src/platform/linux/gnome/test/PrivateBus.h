// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/desktop/QtClock.h"
#include "support/Wait.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QUuid>
#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace lorvane {

/// A program on the bus whose answers are the test's.
class ScriptedService final : public QDBusVirtualObject {
 public:
    using Answer = std::function<QDBusMessage(const QDBusMessage& call)>;

    ScriptedService(const QString& address, QString object)
        : connectionName_(QUuid::createUuid().toString()),
          bus_(QDBusConnection::connectToBus(address, connectionName_)), object_(std::move(object)) {
        EXPECT_TRUE(bus_.registerVirtualObject(object_, this, QDBusConnection::SubPath));
    }
    ~ScriptedService() override { QDBusConnection::disconnectFromBus(connectionName_); }
    ScriptedService(const ScriptedService&) = delete;
    ScriptedService& operator=(const ScriptedService&) = delete;

    void take(const QString& name) { EXPECT_TRUE(bus_.registerService(name)); }
    void drop(const QString& name) { EXPECT_TRUE(bus_.unregisterService(name)); }
    /// "Method:argument,argument".
    [[nodiscard]] QStringList calls() const { return calls_; }
    void forgetCalls() { calls_.clear(); }
    void emitSignal(const QString& path, const QString& interface, const QString& name,
                    const QVariantList& arguments) {
        auto signal = QDBusMessage::createSignal(path, interface, name);
        signal.setArguments(arguments);
        bus_.send(signal);
    }

    /// An answer that was not given at once.
    void send(const QDBusMessage& late) { bus_.send(late); }

    /// An empty message: no answer at all.
    Answer answer = [](const QDBusMessage& call) { return call.createReply(); };

    [[nodiscard]] QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& call, const QDBusConnection& connection) override {
        calls_.append(describe(call));
        const QDBusMessage reply = answer(call);
        if (reply.type() != QDBusMessage::InvalidMessage) {
            connection.send(reply);
        }
        return true;
    }

 private:
    static QString describe(const QDBusMessage& call) {
        QStringList arguments;
        for (const QVariant& argument : call.arguments()) {
            if (argument.metaType() == QMetaType::fromType<QDBusArgument>()) {
                QStringList numbers;
                for (const uint number : qdbus_cast<QList<uint>>(argument)) {
                    numbers.append(QString::number(number));
                }
                arguments.append(QLatin1Char('[') + numbers.join(QLatin1Char(' ')) + QLatin1Char(']'));
            } else {
                arguments.append(argument.toString());
            }
        }
        return call.member() + QLatin1Char(':') + arguments.join(QLatin1Char(','));
    }

    QString connectionName_;
    QDBusConnection bus_;
    QString object_;
    QStringList calls_;
};

/// A session bus for one test, with nobody on it but whom the test brings.
class PrivateBus : public testing::Test {
 protected:
    PrivateBus() {
        daemon_.start(QStringLiteral("dbus-daemon"), {QStringLiteral("--session"), QStringLiteral("--nofork"),
                                                      QStringLiteral("--print-address=1")});
        EXPECT_TRUE(daemon_.waitForStarted());
        while (!address.endsWith(QLatin1Char('\n')) && daemon_.waitForReadyRead()) {
            address += QString::fromLatin1(daemon_.readAllStandardOutput());
        }
        address = address.trimmed();
        bus = QDBusConnection::connectToBus(address, connectionName_);
        EXPECT_TRUE(bus.isConnected());
    }
    ~PrivateBus() override {
        bus = QDBusConnection(QString());
        QDBusConnection::disconnectFromBus(connectionName_);
        daemon_.kill();
        daemon_.waitForFinished();
    }

    QString address;
    QtClock clock;

 private:
    QProcess daemon_;
    QString connectionName_ = QUuid::createUuid().toString();

 protected:
    QDBusConnection bus{QString()};
};

} // namespace lorvane
