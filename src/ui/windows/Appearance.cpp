// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/windows/Appearance.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QGuiApplication>
#include <QPalette>

namespace lorvane {

namespace {

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearanceGroup = QStringLiteral("org.freedesktop.appearance");
const QString colourScheme = QStringLiteral("color-scheme");
constexpr uint prefersDark = 1;

// The portal wraps a value twice when it is asked for.
QVariant unwrapped(QVariant value) {
    while (value.canConvert<QDBusVariant>()) {
        value = value.value<QDBusVariant>().variant();
    }
    return value;
}

} // namespace

Appearance::Appearance(QDBusConnection session) : session_(std::move(session)) {
    session_.connect(portalService, portalPath, settingsInterface, QStringLiteral("SettingChanged"), this,
                     SLOT(settingChanged(QString, QString, QDBusVariant)));
    askDesktop();
}

void Appearance::askDesktop() {
    auto question =
        QDBusMessage::createMethodCall(portalService, portalPath, settingsInterface, QStringLiteral("Read"));
    question << appearanceGroup << colourScheme;
    auto* const call = new QDBusPendingCallWatcher(session_.asyncCall(question), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call] {
        call->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *call;
        if (!reply.isError()) {
            settingChanged(appearanceGroup, colourScheme, reply.value());
        }
    });
}

void Appearance::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
    if (group == appearanceGroup && key == colourScheme) {
        desktopIsDark_ = unwrapped(value.variant()).toUInt() == prefersDark;
        refresh();
    }
}

void Appearance::apply(const QString& choice) {
    choice_ = choice;
    refresh();
}

void Appearance::refresh() {
    const bool isDark =
        choice_ == QLatin1String("dark") || (choice_ != QLatin1String("light") && desktopIsDark_);
    if (isDark != isDark_) {
        isDark_ = isDark;
        Q_EMIT darkChanged();
    }
}

void applyPalette(bool dark) {
    const QColor paper(dark ? 0x1b1710 : 0xfbf8f2);
    const QColor ink(dark ? 0xf4efe6 : 0x211e19);
    const QColor quiet(dark ? 0xb9b0a1 : 0x6b6459);
    QPalette palette(paper);
    for (const auto role : {QPalette::Window, QPalette::Base, QPalette::Button}) {
        palette.setColor(role, paper);
    }
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(role, ink);
        palette.setColor(QPalette::Disabled, role, quiet);
    }
    palette.setColor(QPalette::Highlight, QColor(dark ? 0xe8836d : 0xb4472f));
    palette.setColor(QPalette::HighlightedText, QColor(dark ? 0x1b1710 : 0xffffff));
    QGuiApplication::setPalette(palette);
}

} // namespace lorvane
