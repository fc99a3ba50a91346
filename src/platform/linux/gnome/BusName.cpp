// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/gnome/BusName.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace lorvane {

BusName::BusName(QDBusConnection bus, const QString& name, std::function<void()> changed)
    : bus_(std::move(bus)), watcher_(name, bus_, QDBusServiceWatcher::WatchForOwnerChange),
      changed_(std::move(changed)) {
    connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString& /*name*/, const QString& /*before*/, const QString& owner) {
                hasNews_ = true;
                setOwner({});
                setOwner(owner);
            });
    ask(name);
}

void BusName::ask(const QString& name) {
    auto question = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetNameOwner"));
    question << name;
    auto* const answer = new QDBusPendingCallWatcher(bus_.asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        answer->deleteLater();
        const QDBusPendingReply<QString> reply = *answer;
        // The bus tells changes and answers in the order in which they happened, but Qt does not always hand
        // them over in that order. Changes come in theirs, so the last of them is right.
        if (!hasNews_ && !reply.isError()) {
            setOwner(reply.value());
        }
    });
}

void BusName::setOwner(const QString& owner) {
    if (owner != owner_) {
        owner_ = owner;
        changed_();
    }
}

} // namespace lorvane
