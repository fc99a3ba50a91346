// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/NoticeNotifier.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QVariantMap>

namespace lorvane {

namespace {

constexpr int shownMilliseconds = 5000;

} // namespace

NoticeNotifier::NoticeNotifier(DictationController& controller, QDBusConnection bus) : bus_(std::move(bus)) {
    subscription_ = controller.subscribePhase([this](const Phase& phase) { show(phase); });
}

void NoticeNotifier::show(const Phase& phase) {
    const auto* const notice = std::get_if<Notice>(&phase);
    if (notice == nullptr) {
        return;
    }
    auto call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
    call << QStringLiteral("Lorvane") << shownId_ << QString() << QStringLiteral("Lorvane") << notice->text
         << QStringList() << QVariantMap{{QStringLiteral("transient"), true}} << shownMilliseconds;
    auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        const QDBusPendingReply<quint32> reply = *watcher;
        shownId_ = reply.isError() ? 0 : reply.value();
        watcher->deleteLater();
    });
}

} // namespace lorvane
