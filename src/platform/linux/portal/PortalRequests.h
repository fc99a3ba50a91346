// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "base/Task.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QSet>
#include <QVariantMap>

#include <map>

namespace lorvane {

/// How a request to the desktop portal ended.
struct PortalAnswer {
    enum class Outcome {
        granted,
        cancelled, ///< by the user
        refused,   ///< ended in another way, an error, or an answer that makes no sense
        silent,    ///< nothing came in the time
    };
    Outcome outcome = Outcome::refused;
    QVariantMap results;
    /// For the log.
    QString problem;

    [[nodiscard]] bool isGranted() const { return outcome == Outcome::granted; }
};

/// Calls of the desktop portal (org.freedesktop.portal.Desktop) by its rules: a call answers with the path of
/// a request, and the request tells its end by a signal. Source: the interface files of xdg-desktop-portal.
/// Main thread; nothing waits for the bus.
class PortalRequests final : public QObject {
    Q_OBJECT

 public:
    PortalRequests(QDBusConnection bus, Clock& clock);

    /// The last argument of the call are the options, which are completed here. A request that is not
    /// answered in `patience` is closed, and with it its dialog.
    QCoro::Task<PortalAnswer> request(QString interface, QString method, QVariantList arguments,
                                      QVariantMap options, Duration patience, TaskScope scope);
    /// A session of that interface of the portal. One that is told of when nobody waits for it any more is
    /// closed again.
    QCoro::Task<PortalAnswer> createSession(QString interface, Duration patience, TaskScope scope);
    /// The session of that answer; empty when there is none.
    [[nodiscard]] static QString sessionOf(const PortalAnswer& created);
    /// A call without a request. A portal that is not running is started by it.
    [[nodiscard]] Completion<QDBusMessage> call(const QString& path, const QString& interface,
                                                const QString& method, const QVariantList& arguments);
    /// The version of an interface of the portal; 0 when it is not there.
    QCoro::Task<uint> version(QString interface, TaskScope scope);
    /// A session of ours ends.
    void closeSession(const QString& session);

    [[nodiscard]] static QString objectPath() { return QStringLiteral("/org/freedesktop/portal/desktop"); }
    [[nodiscard]] static QString serviceName() { return QStringLiteral("org.freedesktop.portal.Desktop"); }
    [[nodiscard]] static QString freshToken();
    [[nodiscard]] QDBusConnection& bus() { return bus_; }

 Q_SIGNALS:
    /// The portal came, or went and took all sessions with it.
    void ownerChanged(bool isThere);

 private Q_SLOTS:
    void takeResponse(const QDBusMessage& signal);

 private:
    class Listening;
    enum class Gives { nothing, session };
    QCoro::Task<PortalAnswer> send(QString interface, QString method, QVariantList arguments,
                                   QVariantMap options, Gives gives, Duration patience, TaskScope scope);
    void listenAt(const QString& path, bool listen);
    [[nodiscard]] static PortalAnswer answerIn(const QDBusMessage& response);
    [[nodiscard]] QString expectedPath(const QString& token) const;

    QDBusConnection bus_;
    Clock& clock_;
    QDBusServiceWatcher watcher_;
    std::map<QString, Completion<PortalAnswer>> waiting_;
    /// The paths of requests for a session that may still be answered.
    QSet<QString> abandoned_;
};

} // namespace lorvane
