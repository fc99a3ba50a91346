// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/setup/SetupProbe.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace lorvane {

namespace {

TEST(SetupProbe, SessionWithoutWaylandIsX11WhateverElseIsThere) {
    DesktopSigns signs;
    signs.busNames = {QStringLiteral("org.kde.KWin"), QStringLiteral("org.gnome.Shell")};
    EXPECT_EQ(desktopFrom(signs), SetupDesktop::x11);
}

TEST(SetupProbe, DesktopIsToldByWhatItHas) {
    DesktopSigns signs;
    signs.isWayland = true;
    EXPECT_EQ(desktopFrom(signs), SetupDesktop::other);
    signs.busNames = {QStringLiteral("org.gnome.Shell")};
    EXPECT_EQ(desktopFrom(signs), SetupDesktop::gnome);
    signs.busNames = {QStringLiteral("org.kde.KWin")};
    EXPECT_EQ(desktopFrom(signs), SetupDesktop::kde);
    signs.hasNiri = true;
    EXPECT_EQ(desktopFrom(signs), SetupDesktop::niri);
    signs.hasHyprland = true;
    EXPECT_EQ(desktopFrom(signs), SetupDesktop::hyprland);
    signs.hasSwaySocket = true;
    EXPECT_EQ(desktopFrom(signs), SetupDesktop::sway);
}

TEST(SetupProbe, InputMethodEntryIsTheOneThatNamesOurHelper) {
    const QTemporaryDir folder;
    const QString entry = folder.filePath(QStringLiteral("com.ostrand.tirra.inputmethod.desktop"));
    QFile file(entry);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[Desktop Entry]\nExec=/usr/lib/lorvane/lorvane-input-method\nNoDisplay=true\n");
    file.close();
    const QStringList folders{QStringLiteral("/nonexistent"), folder.path()};
    EXPECT_EQ(inputMethodEntry(QStringLiteral("/usr/lib/lorvane/lorvane-input-method"), folders), entry);
    EXPECT_EQ(inputMethodEntry(QStringLiteral("/usr/lib/lorvane/lorvane-input"), folders), QString());
    EXPECT_EQ(inputMethodEntry(QString(), folders), QString());
}

} // namespace

} // namespace lorvane
