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
    explicit Listening(PortalRequests& requests) : requests_(requests) {}
    Listening(const Listening&) = delete;
    Listening& operator=(const Listening&) = delete;
    ~Listening() {
        for (const QString& path : std::as_const(paths_)) {
            requests_.waiting_.erase(path);
            requests_.bus_.disconnect(serviceName(), path, requestInterface, QStringLiteral("Response"),
                                      &requests_, SLOT(takeResponse(QDBusMessage)));
        }
    }
    void at(const QString& path) {
        if (!path.isEmpty() && !paths_.contains(path)) {
            paths_.append(path);
            requests_.waiting_.emplace(path, answer);
            requests_.bus_.connect(serviceName(), path, requestInterface, QStringLiteral("Response"),
                                   &requests_, SLOT(takeResponse(QDBusMessage)));
        }
    }
    const Completion<PortalAnswer> answer;

 private:
    PortalRequests& requests_;
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

QCoro::Task<PortalAnswer> PortalRequests::request(QString interface, QString method, QVariantList arguments,
                                                  QVariantMap options, Duration patience, TaskScope scope) {
    const QString token = freshToken();
    options.insert(QStringLiteral("handle_token"), token);
    arguments.append(options);
    Listening listening(*this);
    listening.at(expectedPath(token));
    const auto calling = call(objectPath(), interface, method, arguments);
    const QDBusMessage reply = co_await calling.wait(scope);
    const QString path = reply.arguments().value(0).value<QDBusObjectPath>().path();
    if (reply.type() != QDBusMessage::ReplyMessage || path.isEmpty()) {
        co_return PortalAnswer{
            PortalAnswer::Outcome::refused, {}, QStringLiteral("%1: %2").arg(method, reply.errorMessage())};
    }
    listening.at(path);
    const Handle limit = clock_.after(patience, [answer = listening.answer, method] {
        answer.complete({PortalAnswer::Outcome::silent, {}, method + QStringLiteral(": no answer")});
    });
    PortalAnswer answer = co_await listening.answer.wait(scope);
    if (answer.outcome == PortalAnswer::Outcome::silent) {
        const auto closing = call(path, requestInterface, QStringLiteral("Close"), {});
        Q_UNUSED(closing)
    }
    co_return answer;
}

void PortalRequests::takeResponse(const QDBusMessage& signal) {
    const auto found = waiting_.find(signal.path());
    if (found == waiting_.end()) {
        return;
    }
    const auto answer = found->second; // the waiter ends its own entry
    if (signal.signature() != QLatin1String("ua{sv}")) {
        answer.complete({PortalAnswer::Outcome::refused, {}, QStringLiteral("an answer of a wrong type")});
        return;
    }
    const uint response = signal.arguments().at(0).toUInt();
    const auto results = qdbus_cast<QVariantMap>(signal.arguments().at(1));
    const auto outcome = response == 0   ? PortalAnswer::Outcome::granted
                         : response == 1 ? PortalAnswer::Outcome::cancelled
                                         : PortalAnswer::Outcome::refused;
    answer.complete({outcome, results, QStringLiteral("response %1").arg(response)});
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
