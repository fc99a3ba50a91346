// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/SessionBus.h"

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QEventLoop>

namespace lorvane {

QDBusMessage askOnSessionBus(const QDBusMessage& call, std::chrono::milliseconds bound) {
    const int timeout = static_cast<int>(bound.count());
    const QDBusPendingCallWatcher watcher(QDBusConnection::sessionBus().asyncCall(call, timeout));
    QEventLoop loop;
    QObject::connect(&watcher, &QDBusPendingCallWatcher::finished, &loop, &QEventLoop::quit);
    if (!watcher.isFinished()) {
        loop.exec();
    }
    return watcher.reply();
}

} // namespace lorvane
