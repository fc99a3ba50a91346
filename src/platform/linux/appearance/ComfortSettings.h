// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <optional>

namespace lorvane {

/// What one setting of the desktop says about motion and contrast; absent where it says nothing.
struct ComfortWish {
    std::optional<bool> lessMotion = {};
    std::optional<bool> moreContrast = {};
    friend bool operator==(const ComfortWish&, const ComfortWish&) = default;
};

/// The settings that are understood, as the desktop portal names them (org.freedesktop.portal.Settings):
///   org.freedesktop.appearance      contrast (1: more), reduced-motion (1: less)
///   org.gnome.desktop.interface     enable-animations, gtk-theme ("HighContrast...")
///   org.gnome.desktop.a11y.interface  high-contrast, reduced-motion ("reduce")
///   org.kde.kdeglobals.KDE          AnimationDurationFactor (0: none)
[[nodiscard]] ComfortWish comfortFrom(const QString& space, const QString& key, const QVariant& value);

/// GTK's own file, for desktops without a portal (gtk-3.0/settings.ini): gtk-enable-animations and
/// gtk-theme-name.
[[nodiscard]] ComfortWish comfortFromGtkFile(const QByteArray& content);
/// The variable GTK_THEME, which stands above the file.
[[nodiscard]] ComfortWish comfortFromTheme(const QString& theme);

} // namespace lorvane
