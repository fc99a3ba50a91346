// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Notification.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QVariantMap>

namespace lorvane {

namespace {

constexpr int shownMilliseconds = 5000;

} // namespace

void Notification::show(const QString& text) {
    auto call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
    call << QStringLiteral("Lorvane") << shownId_ << QString() << QStringLiteral("Lorvane") << text
         << QStringList() << QVariantMap{{QStringLiteral("transient"), true}} << shownMilliseconds;
    auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        const QDBusPendingReply<quint32> reply = *watcher;
        shownId_ = reply.isError() ? 0 : reply.value();
        watcher->deleteLater();
    });
}

} // namespace lorvane
