// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/kde/test/FakeKGlobalAccel.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>

#include <gtest/gtest.h>

namespace lorvane {

namespace {

int connections = 0;
const QString path = QStringLiteral("/kglobalaccel");
const QStringList names{QStringLiteral("org.kde.KWin"), QStringLiteral("org.kde.kglobalaccel")};

} // namespace

FakeKGlobalAccel::FakeKGlobalAccel()
    : bus_(QDBusConnection::connectToBus(QDBusConnection::SessionBus,
                                         QStringLiteral("kglobalaccel%1").arg(++connections))) {
    qDBusRegisterMetaType<QList<int>>();
    bus_.registerVirtualObject(path, this);
}

FakeKGlobalAccel::~FakeKGlobalAccel() {
    disappear();
    bus_.unregisterObject(path);
    QDBusConnection::disconnectFromBus(bus_.name());
}

void FakeKGlobalAccel::appear(bool asCompositor) {
    for (const QString& name : asCompositor ? names : names.mid(1)) {
        EXPECT_TRUE(bus_.registerService(name)) << qPrintable(bus_.lastError().message());
    }
}

void FakeKGlobalAccel::disappear() {
    for (const QString& name : names) {
        bus_.unregisterService(name);
    }
    shortcuts_.clear();
    registered_.clear();
}

void FakeKGlobalAccel::tell(const QString& action, bool isDown, const QString& component) {
    auto signal = QDBusMessage::createSignal(
        QStringLiteral("/component/lorvane"), QStringLiteral("org.kde.kglobalaccel.Component"),
        isDown ? QStringLiteral("globalShortcutPressed") : QStringLiteral("globalShortcutReleased"));
    signal << component << action << qlonglong(0);
    bus_.send(signal);
}

bool FakeKGlobalAccel::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    calls.append(message.member());
    switch (manner) {
    case Manner::silent:
        return true;
    case Manner::error:
        connection.send(message.createErrorReply(QDBusError::Failed, QStringLiteral("no")));
        return true;
    case Manner::wrongType:
        connection.send(message.createReply(QStringLiteral("a text instead")));
        return true;
    case Manner::proper:
        break;
    }
    const QVariant answer = answerTo(message);
    connection.send(answer.isValid() ? message.createReply(answer) : message.createReply());
    return true;
}

QVariant FakeKGlobalAccel::answerTo(const QDBusMessage& message) {
    const QVariantList arguments = message.arguments();
    if (message.member() == QLatin1String("doRegister")) {
        registered_.insert(arguments.at(0).toStringList().value(1));
        return {};
    }
    if (message.member() == QLatin1String("setShortcut")) {
        return QVariant::fromValue(
            set(arguments.at(0).toStringList().value(1), qdbus_cast<QList<int>>(arguments.at(1))));
    }
    if (message.member() == QLatin1String("unregister")) {
        unregistered.append(arguments.at(1).toString());
        registered_.remove(arguments.at(1).toString());
        return shortcuts_.remove(arguments.at(1).toString()) > 0;
    }
    return others.value(arguments.value(0).toInt()); // action
}

QList<int> FakeKGlobalAccel::set(const QString& action, const QList<int>& keys) {
    QList<int> had;
    for (const int key : keys) {
        had.append(registered_.contains(action) && !others.contains(key) ? key : 0);
    }
    shortcuts_.insert(action, had);
    return had;
}

} // namespace lorvane
