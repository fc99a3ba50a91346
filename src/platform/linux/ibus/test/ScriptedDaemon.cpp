// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/ibus/test/ScriptedDaemon.h"

#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace lorvane {

namespace {

const QString properties = QStringLiteral("org.freedesktop.DBus.Properties");

struct Purpose {
    uint purpose = 0;
    uint hints = 0;
};

QDBusArgument& operator<<(QDBusArgument& out, const Purpose& type) {
    out.beginStructure();
    out << type.purpose << type.hints;
    out.endStructure();
    return out;
}

const QDBusArgument& operator>>(const QDBusArgument& in, Purpose& /*type*/) { return in; }

} // namespace

bool ScriptedDaemon::handleMessage(const QDBusMessage& call, const QDBusConnection& connection) {
    const bool isProperty = call.interface() == properties;
    const QString what = isProperty ? call.arguments().value(1).toString() : call.member();
    if (silent.contains(what)) {
        return true;
    }
    QDBusMessage answer = call.createReply();
    if (refused.contains(what)) {
        answer = call.createErrorReply(QStringLiteral("org.freedesktop.DBus.Error.AccessDenied"), QString());
    } else if (what == QLatin1String("GlobalEngine") && inForce.isEmpty()) {
        answer = call.createErrorReply(QStringLiteral("org.freedesktop.DBus.Error.Failed"), QString());
    } else if (what == QLatin1String("GlobalEngine")) {
        answer = call.createReply(ibus::inVariant(ibus::EngineDescription{inForce, inForce}));
    } else if (what == QLatin1String("CurrentInputContext")) {
        answer = call.createReply(
            QVariant::fromValue(QDBusVariant(QVariant::fromValue(QDBusObjectPath(context)))));
    } else if (what == QLatin1String("RegisterComponent")) {
        engines_ = call.service();
        gone_ = std::make_unique<QDBusServiceWatcher>(engines_, connection_,
                                                      QDBusServiceWatcher::WatchForUnregistration);
        // As the real one: whatever is in force goes, ours or not.
        connect(gone_.get(), &QDBusServiceWatcher::serviceUnregistered, this, [this] { inForce.clear(); });
    } else if (what == QLatin1String("SetGlobalEngine")) {
        setEngine(call);
        return true;
    }
    connection.send(answer);
    return true;
}

/// Answers when the engine has been made, as the daemon does.
void ScriptedDaemon::setEngine(const QDBusMessage& call) {
    const QString engine = call.arguments().value(0).toString();
    setEngines.append(engine);
    if (engine != IbusEngine::name) {
        inForce = engine;
        if (!setsUsersInSilence) {
            connection_.send(call.createReply());
        }
        return;
    }
    auto create = QDBusMessage::createMethodCall(engines_, ibus::factoryPath, ibus::factoryInterface,
                                                 QStringLiteral("CreateEngine"));
    create << engine;
    auto* const watcher = new QDBusPendingCallWatcher(connection_.asyncCall(create), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, call, engine] {
        watcher->deleteLater();
        const QDBusPendingReply<QDBusObjectPath> made = *watcher;
        connection_.send(call.createReply());
        if (!made.isError()) {
            bringIntoForce(engine, made.value().path());
        }
    });
}

void ScriptedDaemon::bringIntoForce(const QString& engine, const QString& path) {
    qDBusRegisterMetaType<Purpose>();
    inForce = engine;
    auto type = QDBusMessage::createMethodCall(engines_, path, properties, QStringLiteral("Set"));
    type << ibus::engineInterface << QStringLiteral("ContentType") << ibus::inVariant(Purpose{purpose, 0});
    connection_.asyncCall(type);
    auto focus =
        QDBusMessage::createMethodCall(engines_, path, ibus::engineInterface, QStringLiteral("FocusInId"));
    focus << context << client;
    connection_.asyncCall(focus);
}

void ScriptedDaemon::committed(const QDBusMessage& signal) {
    commits.append(ibus::textOf(signal.arguments().value(0)).value_or(QStringLiteral("?")));
}

} // namespace lorvane
