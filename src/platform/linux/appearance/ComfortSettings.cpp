// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/appearance/ComfortSettings.h"

#include <QList>

namespace lorvane {

namespace {

bool isHighContrast(const QString& theme) {
    return theme.startsWith(QLatin1String("HighContrast"), Qt::CaseInsensitive);
}

ComfortWish motion(bool less) { return {less, {}}; }
ComfortWish contrast(bool more) { return {{}, more}; }

} // namespace

ComfortWish comfortFrom(const QString& space, const QString& key, const QVariant& value) {
    const auto is = [&space, &key](const char* wantedSpace, const char* wantedKey) {
        return space == QLatin1String(wantedSpace) && key == QLatin1String(wantedKey);
    };
    if (is("org.freedesktop.appearance", "contrast")) {
        return contrast(value.toUInt() == 1);
    }
    if (is("org.freedesktop.appearance", "reduced-motion")) {
        return motion(value.toUInt() == 1);
    }
    if (is("org.gnome.desktop.interface", "enable-animations")) {
        return motion(!value.toBool());
    }
    if (is("org.gnome.desktop.interface", "gtk-theme")) {
        return contrast(isHighContrast(value.toString()));
    }
    if (is("org.gnome.desktop.a11y.interface", "high-contrast")) {
        return contrast(value.toBool());
    }
    if (is("org.gnome.desktop.a11y.interface", "reduced-motion")) {
        return motion(value.toString() == QLatin1String("reduce"));
    }
    if (is("org.kde.kdeglobals.KDE", "AnimationDurationFactor")) {
        bool isNumber = false;
        const double factor = value.toString().toDouble(&isNumber);
        return isNumber ? motion(factor == 0) : ComfortWish{};
    }
    return {};
}

ComfortWish comfortFromGtkFile(const QByteArray& content) {
    ComfortWish wish;
    for (const QByteArray& line : content.split('\n')) {
        const qsizetype equals = line.indexOf('=');
        const QByteArray key = line.left(equals).trimmed();
        const QByteArray value = equals < 0 ? QByteArray() : line.mid(equals + 1).trimmed().toLower();
        if (key == "gtk-enable-animations") {
            wish.lessMotion = value == "0" || value == "false";
        } else if (key == "gtk-theme-name") {
            wish.moreContrast = isHighContrast(QString::fromUtf8(value));
        }
    }
    return wish;
}

ComfortWish comfortFromTheme(const QString& theme) {
    return theme.isEmpty() ? ComfortWish{} : contrast(isHighContrast(theme));
}

} // namespace lorvane
