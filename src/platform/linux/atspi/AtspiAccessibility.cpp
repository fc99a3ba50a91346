// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/atspi/AtspiAccessibility.h"

#include <QDBusPendingCall>

namespace lorvane {

AtspiAccessibility::AtspiAccessibility(const Foundation& foundation, AtspiBus& bus,
                                       AccessibilitySwitch& accessibilitySwitch,
                                       std::function<bool()> canPostKeys, QDBusConnection session)
    : foundation_(foundation), bus_(bus), switch_(accessibilitySwitch), canPostKeys_(std::move(canPostKeys)),
      session_(std::move(session)), busWatch_(bus.subscribeConnection([this] { changed_.emit(); })),
      switchWatch_(accessibilitySwitch.subscribe([this] { changed_.emit(); })) {}

bool AtspiAccessibility::isTrusted() const { return bus_.isConnected() && switch_.isOn() && canPostKeys_(); }

void AtspiAccessibility::openAccessibilitySettings() {
    const QString text = advice();
    switch_.switchOn();
    foundation_.log.diagLog(QStringLiteral("[tirra-accessibility] ") + text);
    notify(foundation_.words.text("Lorvane needs accessibility"), text);
}

Handle AtspiAccessibility::subscribe(std::function<void()> changed) {
    return changed_.subscribe(std::move(changed));
}

QString AtspiAccessibility::advice() const {
    const auto& words = foundation_.words;
    if (!bus_.isConnected()) {
        return words.text(
            "The accessibility bus does not answer. Install the package at-spi2-core, then log out and "
            "in again.");
    }
    if (!canPostKeys_()) {
        return words.text(
            "This session takes no synthetic keys, so nothing can be pasted for you. Log in to an X11 "
            "(Xorg) session.");
    }
    return words.text(
        "Accessibility is switched on now. Applications that were open already may have to be started "
        "again; \"lorvane doctor\" lists them.");
}

void AtspiAccessibility::notify(const QString& title, const QString& text) {
    auto message = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
    message.setArguments({QStringLiteral("Lorvane"), 0U, QStringLiteral("lorvane"), title, text,
                          QStringList(), QVariantMap(), -1});
    // Where nobody shows notifications the log has the same words.
    session_.asyncCall(message);
}

} // namespace lorvane
