// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ControlClient.h"

#include "app/ControlNames.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QJsonDocument>
#include <QJsonObject>
#include <QVariantMap>

#include <cstdio>

namespace lorvane {

namespace {

constexpr int answerMilliseconds = 3000;

void print(std::FILE* stream, const QString& text) { std::fprintf(stream, "%s\n", qUtf8Printable(text)); }

QString methodFor(Command::Verb verb) {
    switch (verb) {
    case Command::Verb::start:
        return QStringLiteral("Start");
    case Command::Verb::stop:
        return QStringLiteral("Stop");
    case Command::Verb::toggle:
        return QStringLiteral("Toggle");
    case Command::Verb::cancel:
        return QStringLiteral("Cancel");
    case Command::Verb::quit:
        return QStringLiteral("Quit");
    default:
        return QStringLiteral("Open");
    }
}

int fail(const QDBusMessage& answer) {
    print(stderr,
          QStringLiteral("lorvane: the running program did not answer: %1").arg(answer.errorMessage()));
    return 1;
}

int printStatus(const QDBusConnection& bus, bool json) {
    auto call = QDBusMessage::createMethodCall(control::serviceName, control::objectPath,
                                               QStringLiteral("org.freedesktop.DBus.Properties"),
                                               QStringLiteral("GetAll"));
    call << control::interfaceName;
    const QDBusReply<QVariantMap> reply(bus.call(call, QDBus::Block, answerMilliseconds));
    if (!reply.isValid()) {
        print(stderr,
              QStringLiteral("lorvane: the running program did not answer: %1").arg(reply.error().message()));
        return 1;
    }
    const QVariantMap state = reply.value();
    const QString phase = state.value(QStringLiteral("Phase")).toString();
    const QString notice = state.value(QStringLiteral("Notice")).toString();
    const bool granted = state.value(QStringLiteral("PermissionsGranted")).toBool();
    if (json) {
        const QJsonObject object{
            {QStringLiteral("phase"), phase},
            {QStringLiteral("notice"), notice},
            {QStringLiteral("severity"), state.value(QStringLiteral("Severity")).toString()},
            {QStringLiteral("permissionsGranted"), granted}};
        print(stdout, QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)));
        return 0;
    }
    print(stdout, notice.isEmpty() ? phase : phase + QStringLiteral(": ") + notice);
    if (!granted) {
        print(stdout, QStringLiteral("Fields cannot be read or keys not be posted here; \"lorvane doctor\" "
                                     "tells how to mend it."));
    }
    return 0;
}

} // namespace

int sendCommand(const Command& command) {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        print(stderr, QStringLiteral("lorvane: there is no session bus (is DBUS_SESSION_BUS_ADDRESS set?)"));
        return 1;
    }
    if (!bus.interface()->isServiceRegistered(control::serviceName)) {
        print(stderr, QStringLiteral("lorvane: the program does not run; \"lorvane\" starts it"));
        return 1;
    }
    if (command.verb == Command::Verb::status) {
        return printStatus(bus, command.json);
    }
    const auto call = QDBusMessage::createMethodCall(control::serviceName, control::objectPath,
                                                     control::interfaceName, methodFor(command.verb));
    const QDBusMessage answer = bus.call(call, QDBus::Block, answerMilliseconds);
    return answer.type() == QDBusMessage::ErrorMessage ? fail(answer) : 0;
}

} // namespace lorvane
