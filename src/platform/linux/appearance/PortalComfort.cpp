// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/appearance/PortalComfort.h"

#include <QDBusArgument>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QFile>
#include <QVariantMap>

#include <algorithm>

namespace lorvane {

namespace {

const auto service = QStringLiteral("org.freedesktop.portal.Desktop");
const auto object = QStringLiteral("/org/freedesktop/portal/desktop");
const auto interface = QStringLiteral("org.freedesktop.portal.Settings");
const QStringList spaces{
    QStringLiteral("org.freedesktop.appearance"), QStringLiteral("org.gnome.desktop.interface"),
    QStringLiteral("org.gnome.desktop.a11y.interface"), QStringLiteral("org.kde.kdeglobals.KDE")};

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

PortalComfort::PortalComfort(QDBusConnection session, const QString& configFolder)
    : session_(std::move(session)) {
    const ComfortWish file =
        comfortFromGtkFile(contentOf(configFolder + QStringLiteral("/gtk-3.0/settings.ini")));
    const ComfortWish theme = comfortFromTheme(qEnvironmentVariable("GTK_THEME"));
    wishes_.insert(QStringLiteral("gtk"),
                   {file.lessMotion, theme.moreContrast ? theme.moreContrast : file.moreContrast});
    judge();
    session_.connect(service, object, interface, QStringLiteral("SettingChanged"), this,
                     SLOT(onSettingChanged(QString, QString, QDBusVariant)));
    askPortal();
}

void PortalComfort::askPortal() {
    QDBusMessage question =
        QDBusMessage::createMethodCall(service, object, interface, QStringLiteral("ReadAll"));
    question << spaces;
    auto* const watcher = new QDBusPendingCallWatcher(session_.asyncCall(question), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        takeAnswer(watcher->reply());
        watcher->deleteLater();
    });
}

// Namespaces, each with its settings; an error of a desktop without a portal has no arguments of this kind.
void PortalComfort::takeAnswer(const QDBusMessage& answer) {
    if (answer.type() != QDBusMessage::ReplyMessage || answer.signature() != QLatin1String("a{sa{sv}}")) {
        return;
    }
    const auto all = qdbus_cast<QMap<QString, QVariantMap>>(answer.arguments().value(0));
    for (auto space = all.begin(); space != all.end(); ++space) {
        for (auto setting = space->begin(); setting != space->end(); ++setting) {
            wishes_.insert(space.key() + QLatin1Char(' ') + setting.key(),
                           comfortFrom(space.key(), setting.key(), setting.value()));
        }
    }
    judge();
}

void PortalComfort::onSettingChanged(const QString& space, const QString& key, const QDBusVariant& value) {
    wishes_.insert(space + QLatin1Char(' ') + key, comfortFrom(space, key, value.variant()));
    judge();
}

void PortalComfort::judge() {
    const bool motion = std::any_of(wishes_.begin(), wishes_.end(),
                                    [](const ComfortWish& wish) { return wish.lessMotion.value_or(false); });
    const bool contrast = std::any_of(wishes_.begin(), wishes_.end(), [](const ComfortWish& wish) {
        return wish.moreContrast.value_or(false);
    });
    if (motion != lessMotion_ || contrast != moreContrast_) {
        lessMotion_ = motion;
        moreContrast_ = contrast;
        changed_.emit();
    }
}

} // namespace lorvane
