// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/ibus/IbusEngine.h"
#include "platform/linux/ibus/IbusValues.h"
#include "support/Wait.h"

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QProcess>
#include <QUuid>
#include <gtest/gtest.h>

namespace lorvane {

/// An IBus daemon whose focus, engines and manners are the test's, on a bus of its own.
class ScriptedDaemon final : public QDBusVirtualObject {
 public:
    ScriptedDaemon() {
        ibus::registerTypes();
        bus_.start(QStringLiteral("dbus-daemon"), {QStringLiteral("--session"), QStringLiteral("--nofork"),
                                                   QStringLiteral("--print-address=1")});
        EXPECT_TRUE(bus_.waitForStarted());
        while (!address.endsWith(QLatin1Char('\n')) && bus_.waitForReadyRead()) {
            address += QString::fromLatin1(bus_.readAllStandardOutput());
        }
        address = address.trimmed();
        connection_ = QDBusConnection::connectToBus(address, name_);
        EXPECT_TRUE(connection_.registerVirtualObject(ibus::path, this, QDBusConnection::SubPath));
        EXPECT_TRUE(connection_.registerService(ibus::service));
        connection_.connect(QString(), QString(), ibus::engineInterface, QStringLiteral("CommitText"), this,
                            SLOT(committed(QDBusMessage)));
    }
    ~ScriptedDaemon() override {
        connection_ = QDBusConnection(QString());
        QDBusConnection::disconnectFromBus(name_);
        end();
    }
    ScriptedDaemon(const ScriptedDaemon&) = delete;
    ScriptedDaemon& operator=(const ScriptedDaemon&) = delete;

    void end() {
        bus_.kill();
        bus_.waitForFinished();
    }
    /// The application tells what is being composed.
    void compose(const QString& text, bool isShown) {
        auto signal = QDBusMessage::createSignal(context, ibus::contextInterface,
                                                 QStringLiteral("UpdatePreeditTextWithMode"));
        signal << ibus::inVariant(ibus::Text{text}) << 0U << isShown << 0U;
        connection_.send(signal);
    }
    [[nodiscard]] QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& call, const QDBusConnection& connection) override;

    QString address;
    QString inForce = QStringLiteral("xkb:us::eng");
    const QString context = QStringLiteral("/org/freedesktop/IBus/InputContext_2");
    /// The application that has the focus; "fake" when none that speaks to the daemon has.
    QString client = QStringLiteral("gnome-shell");
    uint purpose = 0;
    /// Methods and properties that are refused, and those that get no answer.
    QStringList refused;
    QStringList silent;
    /// The user's engine is set, and nothing is said of it.
    bool setsUsersInSilence = false;
    QStringList setEngines;
    QStringList commits;

 private Q_SLOTS:
    void committed(const QDBusMessage& signal);

 private:
    Q_OBJECT
    void setEngine(const QDBusMessage& call);
    void bringIntoForce(const QString& engine, const QString& path);

    QProcess bus_;
    QString name_ = QUuid::createUuid().toString();
    QDBusConnection connection_{QString()};
    QString engines_;
    std::unique_ptr<QDBusServiceWatcher> gone_;
};

} // namespace lorvane
