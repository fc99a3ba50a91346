// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/menu/StatusHosts.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace lorvane {

StatusHosts::StatusHosts(QDBusConnection session)
    : session_(std::move(session)),
      service_(watcherService, session_, QDBusServiceWatcher::WatchForOwnerChange) {
    connect(&service_, &QDBusServiceWatcher::serviceOwnerChanged, this, [this] {
        learn(false);
        ask();
    });
    for (const char* signal : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"}) {
        session_.connect(watcherService, watcherPath, watcherService, QString::fromLatin1(signal), this,
                         SLOT(ask()));
    }
    ask();
}

void StatusHosts::ask() {
    auto question = QDBusMessage::createMethodCall(watcherService, watcherPath,
                                                   QStringLiteral("org.freedesktop.DBus.Properties"),
                                                   QStringLiteral("Get"));
    question.setAutoStartService(false);
    question << watcherService << QStringLiteral("IsStatusNotifierHostRegistered");
    auto* const call = new QDBusPendingCallWatcher(session_.asyncCall(question), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call, number = ++asked_] {
        call->deleteLater();
        if (number == asked_) {
            const QDBusPendingReply<QVariant> reply = *call;
            learn(!reply.isError() && reply.value().toBool());
        }
    });
}

void StatusHosts::learn(bool hasHost) {
    if (isKnown_ && hasHost == hasHost_) {
        return;
    }
    isKnown_ = true;
    hasHost_ = hasHost;
    changed_.emit();
}

} // namespace lorvane
