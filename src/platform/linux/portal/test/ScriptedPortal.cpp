// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/portal/test/ScriptedPortal.h"

#include "platform/linux/portal/PortalRequests.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusVariant>

namespace lorvane {

namespace {

const QString prefix = QStringLiteral("org.freedesktop.portal.");

} // namespace

PrivateBus::PrivateBus() {
    daemon_.start(QStringLiteral("dbus-daemon"), {QStringLiteral("--session"), QStringLiteral("--nofork"),
                                                  QStringLiteral("--print-address")});
    if (!daemon_.waitForStarted() || !daemon_.waitForReadyRead()) {
        qFatal("no dbus-daemon");
    }
    address_ = QString::fromUtf8(daemon_.readLine()).trimmed();
}

PrivateBus::~PrivateBus() {
    for (const QString& name : std::as_const(names_)) {
        QDBusConnection::disconnectFromBus(name);
    }
    daemon_.terminate();
    daemon_.waitForFinished();
}

QDBusConnection PrivateBus::connect(const QString& name) {
    names_.append(name);
    return QDBusConnection::connectToBus(address_, name);
}

ScriptedPortal::ScriptedPortal(QDBusConnection bus) : bus_(std::move(bus)) {
    bus_.registerVirtualObject(PortalRequests::objectPath(), this, QDBusConnection::SubPath);
    appear();
}

ScriptedPortal::~ScriptedPortal() { bus_.unregisterObject(PortalRequests::objectPath()); }

void ScriptedPortal::appear() { bus_.registerService(PortalRequests::serviceName()); }

void ScriptedPortal::vanish() { bus_.unregisterService(PortalRequests::serviceName()); }

QString ScriptedPortal::introspect(const QString& /*path*/) const { return {}; }

bool ScriptedPortal::handleMessage(const QDBusMessage& message, const QDBusConnection& /*connection*/) {
    if (message.interface() == QLatin1String("org.freedesktop.DBus.Properties")) {
        const QString interface = message.arguments().value(0).toString().mid(prefix.size());
        const auto version = versions.find(interface);
        if (version == versions.end()) {
            bus_.send(message.createErrorReply(QDBusError::UnknownInterface, QStringLiteral("none")));
        } else {
            answer(message, {QVariant::fromValue(QDBusVariant(version->second))});
        }
        return true;
    }
    const QString call = message.interface().mid(prefix.size()) + u'.' + message.member();
    calls.append(call);
    if (call.startsWith(QLatin1String("Request.")) || call.startsWith(QLatin1String("Session.")) ||
        call.contains(QLatin1String("Notify"))) {
        if (call.contains(QLatin1String("NotifyKeyboardKeycode"))) {
            calls.last() += QStringLiteral(" %1 %2")
                                .arg(message.arguments().value(2).toInt())
                                .arg(message.arguments().value(3).toUInt());
        }
        answer(message, {});
        if (closeAfterKeys > 0 && call.contains(QLatin1String("Notify")) && --closeAfterKeys == 0) {
            closeSession();
        }
        return true;
    }
    beginRequest(call, message);
    return true;
}

void ScriptedPortal::answer(const QDBusMessage& message, const QVariantList& arguments) {
    bus_.send(message.createReply(arguments));
}

void ScriptedPortal::beginRequest(const QString& call, const QDBusMessage& message) {
    const auto options = qdbus_cast<QVariantMap>(message.arguments().last());
    lastOptions[call] = options;
    if (call.endsWith(QLatin1String("BindShortcuts"))) {
        lastShortcuts = qdbus_cast<QList<PortalShortcut>>(message.arguments().value(1));
    }
    Ending ending = script[call];
    if (ending.kind == Ending::Kind::errs) {
        bus_.send(message.createErrorReply(QDBusError::AccessDenied, QStringLiteral("not you")));
        return;
    }
    QString sender = message.service().mid(1);
    const QString tail = sender.replace(u'.', u'_') + u'/';
    const QString token = options.value(QStringLiteral("handle_token")).toString();
    const QString path = PortalRequests::objectPath() + QStringLiteral("/request/") + tail +
                         (oldPaths ? QStringLiteral("other") + token : token);
    answer(message, {QVariant::fromValue(QDBusObjectPath(path))});
    if (call.endsWith(QLatin1String("CreateSession"))) {
        session = PortalRequests::objectPath() + QStringLiteral("/session/") + tail +
                  options.value(QStringLiteral("session_handle_token")).toString();
        if (!ending.results.contains(QStringLiteral("session_handle"))) {
            ending.results.insert(QStringLiteral("session_handle"), session);
        }
    }
    openRequest_ = path;
    if (ending.kind == Ending::Kind::responds) {
        sendResponse(path, ending.response, ending.results);
    } else if (ending.kind == Ending::Kind::respondsWrongly) {
        auto signal =
            QDBusMessage::createSignal(path, prefix + QStringLiteral("Request"), QStringLiteral("Response"));
        signal << QStringLiteral("yes");
        bus_.send(signal);
    }
}

void ScriptedPortal::respond(uint response, const QVariantMap& results) {
    sendResponse(openRequest_, response, results);
}

void ScriptedPortal::sendResponse(const QString& path, uint response, const QVariantMap& results) {
    auto signal =
        QDBusMessage::createSignal(path, prefix + QStringLiteral("Request"), QStringLiteral("Response"));
    signal << response << results;
    bus_.send(signal);
}

void ScriptedPortal::tellShortcut(const QString& signal, const QString& id, const QString& of) {
    auto message = QDBusMessage::createSignal(PortalRequests::objectPath(),
                                              prefix + QStringLiteral("GlobalShortcuts"), signal);
    message << QVariant::fromValue(QDBusObjectPath(of.isEmpty() ? session : of)) << id << qulonglong{0}
            << QVariantMap();
    bus_.send(message);
}

void ScriptedPortal::closeSession() {
    auto signal =
        QDBusMessage::createSignal(session, prefix + QStringLiteral("Session"), QStringLiteral("Closed"));
    signal << QVariantMap();
    bus_.send(signal);
}

} // namespace lorvane
