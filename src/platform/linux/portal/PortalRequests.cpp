// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/portal/PortalRequests.h"

#include <QDBusArgument>
#include <QDBusError>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QUuid>

namespace lorvane {

namespace {

const QString requestInterface = QStringLiteral("org.freedesktop.portal.Request");
constexpr int answerBound = 5000; // milliseconds; the portal may have to be started

} // namespace

/// Hears the end of one request, under every path that it may have.
class PortalRequests::Listening {
 public:
    Listening(PortalRequests& requests, Gives gives) : requests_(requests), gives_(gives) {}
    Listening(const Listening&) = delete;
    Listening& operator=(const Listening&) = delete;
    ~Listening() {
        const bool staysOpen = gives_ == Gives::session && !isAnswered;
        for (const QString& path : std::as_const(paths_)) {
            requests_.waiting_.erase(path);
            if (staysOpen) {
                requests_.abandoned_.insert(path);
            } else {
                requests_.listenAt(path, false);
            }
        }
    }
    void at(const QString& path) {
        if (!path.isEmpty() && !paths_.contains(path)) {
            paths_.append(path);
            requests_.waiting_.emplace(path, answer);
            requests_.listenAt(path, true);
        }
    }
    const Completion<PortalAnswer> answer;
    bool isAnswered = false;

 private:
    PortalRequests& requests_;
    Gives gives_;
    QStringList paths_;
};

PortalRequests::PortalRequests(QDBusConnection bus, Clock& clock)
    : bus_(std::move(bus)), clock_(clock),
      watcher_(serviceName(), bus_, QDBusServiceWatcher::WatchForOwnerChange) {
    connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString&, const QString& owner) {
                Q_EMIT ownerChanged(!owner.isEmpty());
            });
}

QString PortalRequests::freshToken() {
    return QStringLiteral("lorvane_") + QUuid::createUuid().toString(QUuid::Id128);
}

QString PortalRequests::expectedPath(const QString& token) const {
    QString sender = bus_.baseService().mid(1);
    return objectPath() + QStringLiteral("/request/") + sender.replace(u'.', u'_') + u'/' + token;
}

void PortalRequests::listenAt(const QString& path, bool listen) {
    const QString response = QStringLiteral("Response");
    if (listen) {
        bus_.connect(serviceName(), path, requestInterface, response, this, SLOT(takeResponse(QDBusMessage)));
    } else {
        bus_.disconnect(serviceName(), path, requestInterface, response, this,
                        SLOT(takeResponse(QDBusMessage)));
    }
}

QCoro::Task<PortalAnswer> PortalRequests::request(QString interface, QString method, QVariantList arguments,
                                                  QVariantMap options, Duration patience, TaskScope scope) {
    return send(std::move(interface), std::move(method), std::move(arguments), std::move(options),
                Gives::nothing, patience, std::move(scope));
}

QCoro::Task<PortalAnswer> PortalRequests::createSession(QString interface, Duration patience,
                                                        TaskScope scope) {
    QVariantMap options{{QStringLiteral("session_handle_token"), freshToken()}};
    return send(std::move(interface), QStringLiteral("CreateSession"), {}, std::move(options), Gives::session,
                patience, std::move(scope));
}

QString PortalRequests::sessionOf(const PortalAnswer& created) {
    const QVariant handle = created.results.value(QStringLiteral("session_handle"));
    const QString path = handle.value<QDBusObjectPath>().path();
    if (!created.isGranted()) {
        return {};
    }
    return path.isEmpty() ? handle.toString() : path;
}

QCoro::Task<PortalAnswer> PortalRequests::send(QString interface, QString method, QVariantList arguments,
                                               QVariantMap options, Gives gives, Duration patience,
                                               TaskScope scope) {
    const QString token = freshToken();
    options.insert(QStringLiteral("handle_token"), token);
    arguments.append(options);
    Listening listening(*this, gives);
    listening.at(expectedPath(token));
    const auto calling = call(objectPath(), interface, method, arguments);
    const QDBusMessage reply = co_await calling.wait(scope);
    const QString path = reply.arguments().value(0).value<QDBusObjectPath>().path();
    if (reply.type() != QDBusMessage::ReplyMessage || path.isEmpty()) {
        listening.isAnswered = reply.errorName() != QLatin1String("org.freedesktop.DBus.Error.NoReply");
        co_return PortalAnswer{
            PortalAnswer::Outcome::refused, {}, QStringLiteral("%1: %2").arg(method, reply.errorMessage())};
    }
    listening.at(path);
    const Handle limit = clock_.after(patience, [answer = listening.answer, method] {
        answer.complete({PortalAnswer::Outcome::silent, {}, method + QStringLiteral(": no answer")});
    });
    PortalAnswer answer = co_await listening.answer.wait(scope);
    listening.isAnswered = answer.outcome != PortalAnswer::Outcome::silent;
    // A request for a session has no dialog, and its end would hide whether there is one now.
    if (!listening.isAnswered && gives == Gives::nothing) {
        const auto closing = call(path, requestInterface, QStringLiteral("Close"), {});
        Q_UNUSED(closing)
    }
    co_return answer;
}

void PortalRequests::takeResponse(const QDBusMessage& signal) {
    const auto found = waiting_.find(signal.path());
    if (found != waiting_.end()) {
        const auto answer = found->second; // the waiter ends its own entry
        answer.complete(answerIn(signal));
    } else if (abandoned_.remove(signal.path())) {
        listenAt(signal.path(), false);
        if (const QString session = sessionOf(answerIn(signal)); !session.isEmpty()) {
            closeSession(session);
        }
    }
}

PortalAnswer PortalRequests::answerIn(const QDBusMessage& response) {
    if (response.signature() != QLatin1String("ua{sv}")) {
        return {PortalAnswer::Outcome::refused, {}, QStringLiteral("an answer of a wrong type")};
    }
    const uint code = response.arguments().at(0).toUInt();
    const auto outcome = code == 0   ? PortalAnswer::Outcome::granted
                         : code == 1 ? PortalAnswer::Outcome::cancelled
                                     : PortalAnswer::Outcome::refused;
    return {outcome, qdbus_cast<QVariantMap>(response.arguments().at(1)),
            QStringLiteral("response %1").arg(code)};
}

Completion<QDBusMessage> PortalRequests::call(const QString& path, const QString& interface,
                                              const QString& method, const QVariantList& arguments) {
    auto message = QDBusMessage::createMethodCall(serviceName(), path, interface, method);
    message.setArguments(arguments);
    Completion<QDBusMessage> answer;
    if (!bus_.isConnected()) { // such a call never ends
        answer.complete(QDBusMessage::createError(QDBusError::Disconnected, QStringLiteral("no bus")));
        return answer;
    }
    auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(message, answerBound), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, answer] {
        watcher->deleteLater();
        answer.complete(watcher->reply());
    });
    return answer;
}

QCoro::Task<uint> PortalRequests::version(QString interface, TaskScope scope) {
    const QVariantList arguments{interface, QStringLiteral("version")};
    const auto asking = call(objectPath(), QStringLiteral("org.freedesktop.DBus.Properties"),
                             QStringLiteral("Get"), arguments);
    const QDBusMessage reply = co_await asking.wait(scope);
    co_return reply.type() == QDBusMessage::ReplyMessage
        ? reply.arguments().value(0).value<QDBusVariant>().variant().toUInt()
        : 0;
}

void PortalRequests::closeSession(const QString& session) {
    const auto closing =
        call(session, QStringLiteral("org.freedesktop.portal.Session"), QStringLiteral("Close"), {});
    Q_UNUSED(closing)
}

} // namespace lorvane
