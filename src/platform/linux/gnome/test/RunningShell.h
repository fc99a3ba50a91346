// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/SessionHands.h"
#include "support/Wait.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <gtest/gtest.h>

namespace lorvane::gnomeShell {

inline QDBusMessage evaluation(const QString& expression) {
    auto call =
        QDBusMessage::createMethodCall(QStringLiteral("org.gnome.Shell"), QStringLiteral("/org/gnome/Shell"),
                                       QStringLiteral("org.gnome.Shell"), QStringLiteral("Eval"));
    call << expression;
    return call;
}

/// What an expression is inside the shell, which evaluates for everyone as the virtual desktop has it.
inline QString evaluate(const QString& expression) {
    const QDBusMessage answer = QDBusConnection::sessionBus().call(evaluation(expression));
    EXPECT_TRUE(answer.arguments().value(0).toBool()) << answer.arguments().value(1).toString().toStdString();
    return answer.arguments().value(1).toString();
}

/// Has it do nothing else for so long; returns at once.
inline void keepBusy(std::chrono::milliseconds time) {
    QDBusConnection::sessionBus().asyncCall(evaluation(
        QStringLiteral("const end = Date.now() + %1; while (Date.now() < end); true").arg(time.count())));
}

inline bool hasExtension() {
    return QDBusConnection::sessionBus().interface()->isServiceRegistered(
        QStringLiteral("com.ostrand.tirra.ShellKeys"));
}

/// Installs our extension, and switches it on as at a login.
inline void loadExtension(const QString& folder) {
    hands::ask({QStringLiteral("extension"), folder});
    EXPECT_TRUE(waitUntil(hasExtension));
}

inline void switchExtensionOn() {
    evaluate(QStringLiteral("Main.extensionManager.enableExtension('keys@tirra.ostrand.com')"));
    EXPECT_TRUE(waitUntil(hasExtension));
}

inline void switchExtensionOff() {
    evaluate(QStringLiteral("Main.extensionManager.disableExtension('keys@tirra.ostrand.com')"));
    EXPECT_TRUE(waitUntil([] { return !hasExtension(); }));
}

} // namespace lorvane::gnomeShell
