// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/atspi/AccessibilitySwitch.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

namespace lorvane {

namespace {

const QString busService = QStringLiteral("org.a11y.Bus");
const QString busPath = QStringLiteral("/org/a11y/bus");
const QString statusInterface = QStringLiteral("org.a11y.Status");
const QString enabledProperty = QStringLiteral("IsEnabled");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");

QDBusMessage propertyCall(const QString& member) {
    return QDBusMessage::createMethodCall(busService, busPath, propertiesInterface, member);
}

} // namespace

AccessibilitySwitch::AccessibilitySwitch(QDBusConnection session) : session_(std::move(session)) {
    session_.connect(busService, busPath, propertiesInterface, QStringLiteral("PropertiesChanged"), this,
                     SLOT(propertiesChanged(QDBusMessage)));
    auto* watcher =
        new QDBusServiceWatcher(busService, session_, QDBusServiceWatcher::WatchForOwnerChange, this);
    // A service that was started anew has forgotten the switch.
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, [this] { switchOn(); });
    connect(watcher, &QDBusServiceWatcher::serviceUnregistered, this, [this] { learn(false); });
    switchOn();
}

void AccessibilitySwitch::switchOn() {
    auto set = propertyCall(QStringLiteral("Set"));
    set.setArguments({statusInterface, enabledProperty, QVariant::fromValue(QDBusVariant(true))});
    session_.asyncCall(set);
    ask();
}

void AccessibilitySwitch::ask() {
    auto get = propertyCall(QStringLiteral("Get"));
    get.setArguments({statusInterface, enabledProperty});
    auto* watcher = new QDBusPendingCallWatcher(session_.asyncCall(get), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<QDBusVariant> answer = *watcher;
        learn(!answer.isError() && answer.value().variant().toBool());
    });
}

void AccessibilitySwitch::propertiesChanged(const QDBusMessage& message) {
    if (message.arguments().value(0).toString() == statusInterface) {
        ask();
    }
}

void AccessibilitySwitch::learn(bool isOn) {
    if (isOn_ != isOn) {
        isOn_ = isOn;
        changed_.emit();
    }
}

} // namespace lorvane
