// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/appearance/ComfortSettings.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

ComfortWish from(const char* space, const char* key, const QVariant& value) {
    return comfortFrom(QLatin1String(space), QLatin1String(key), value);
}

const ComfortWish lessMotion{true, {}};
const ComfortWish allMotion{false, {}};
const ComfortWish moreContrast{{}, true};
const ComfortWish plainContrast{{}, false};

TEST(ComfortSettings, ReadsTheCommonOnesOfAllDesktops) {
    EXPECT_EQ(from("org.freedesktop.appearance", "contrast", 1U), moreContrast);
    EXPECT_EQ(from("org.freedesktop.appearance", "contrast", 0U), plainContrast);
    EXPECT_EQ(from("org.freedesktop.appearance", "reduced-motion", 1U), lessMotion);
    EXPECT_EQ(from("org.freedesktop.appearance", "reduced-motion", 0U), allMotion);
}

TEST(ComfortSettings, ReadsThoseOfGnome) {
    EXPECT_EQ(from("org.gnome.desktop.interface", "enable-animations", false), lessMotion);
    EXPECT_EQ(from("org.gnome.desktop.interface", "enable-animations", true), allMotion);
    EXPECT_EQ(from("org.gnome.desktop.interface", "gtk-theme", "HighContrastInverse"), moreContrast);
    EXPECT_EQ(from("org.gnome.desktop.interface", "gtk-theme", "Adwaita"), plainContrast);
    EXPECT_EQ(from("org.gnome.desktop.a11y.interface", "high-contrast", true), moreContrast);
    EXPECT_EQ(from("org.gnome.desktop.a11y.interface", "reduced-motion", "reduce"), lessMotion);
}

TEST(ComfortSettings, ReadsThatOfKde) {
    EXPECT_EQ(from("org.kde.kdeglobals.KDE", "AnimationDurationFactor", "0"), lessMotion);
    EXPECT_EQ(from("org.kde.kdeglobals.KDE", "AnimationDurationFactor", "0.5"), allMotion);
    EXPECT_EQ(from("org.kde.kdeglobals.KDE", "AnimationDurationFactor", "fast"), ComfortWish{});
}

TEST(ComfortSettings, KnowsNothingOfOtherSettings) {
    EXPECT_EQ(from("org.gnome.desktop.interface", "contrast", 1U), ComfortWish{});
    EXPECT_EQ(from("org.freedesktop.appearance", "color-scheme", 1U), ComfortWish{});
}

TEST(ComfortSettings, ReadsTheFileOfGtk) {
    EXPECT_EQ(comfortFromGtkFile("[Settings]\ngtk-enable-animations = 0\ngtk-theme-name=HighContrast\n"),
              (ComfortWish{true, true}));
    EXPECT_EQ(comfortFromGtkFile("gtk-enable-animations=TRUE\ngtk-theme-name=Breeze"),
              (ComfortWish{false, false}));
    EXPECT_EQ(comfortFromGtkFile("[Settings]\n# gtk-enable-animations=0\n"), ComfortWish{});
    EXPECT_EQ(comfortFromGtkFile({}), ComfortWish{});
}

TEST(ComfortSettings, ReadsTheThemeOfTheEnvironment) {
    EXPECT_EQ(comfortFromTheme(QStringLiteral("HighContrast:dark")), moreContrast);
    EXPECT_EQ(comfortFromTheme(QStringLiteral("Adwaita")), plainContrast);
    EXPECT_EQ(comfortFromTheme({}), ComfortWish{});
}

} // namespace

} // namespace lorvane
