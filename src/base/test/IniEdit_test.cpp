// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/IniEdit.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

const QByteArray kwinrc = "# mine\r\n[Windows]\nRollOverDesktops = "
                          "true\n\n[Xwayland]\nScale=1\n\n[Plugins]\nXwaylandEavesdrops=x\n";

TEST(IniEdit, KeyIsAddedAtTheEndOfItsGroup) {
    EXPECT_EQ(withIniLine(kwinrc, "Xwayland", "XwaylandEavesdrops", "XwaylandEavesdrops=Modifiers"),
              "# mine\r\n[Windows]\nRollOverDesktops = "
              "true\n\n[Xwayland]\nScale=1\nXwaylandEavesdrops=Modifiers\n\n"
              "[Plugins]\nXwaylandEavesdrops=x\n");
}

TEST(IniEdit, KeyOfAnotherGroupIsLeftAlone) {
    EXPECT_EQ(iniLine(kwinrc, "Xwayland", "XwaylandEavesdrops"), std::nullopt);
    EXPECT_EQ(iniLine(kwinrc, "Plugins", "XwaylandEavesdrops"), QByteArray("XwaylandEavesdrops=x"));
}

TEST(IniEdit, MissingGroupIsAddedAtTheEnd) {
    EXPECT_EQ(withIniLine("[A]\nb=1\n", "Wayland", "InputMethod", "InputMethod=x"),
              "[A]\nb=1\n\n[Wayland]\nInputMethod=x\n");
    EXPECT_EQ(withIniLine("", "Wayland", "InputMethod", "InputMethod=x"), "[Wayland]\nInputMethod=x\n");
    EXPECT_EQ(withIniLine("[A]\nb=1", "Wayland", "InputMethod", "InputMethod=x"),
              "[A]\nb=1\n\n[Wayland]\nInputMethod=x\n");
}

TEST(IniEdit, KeyIsReplacedWithItsSuffixAndItsPlace) {
    const QByteArray file =
        "[Wayland]\nInputMethod[$e]=/usr/share/other.desktop\nVirtualKeyboardEnabled=true\n";
    EXPECT_EQ(iniLine(file, "Wayland", "InputMethod"),
              QByteArray("InputMethod[$e]=/usr/share/other.desktop"));
    EXPECT_EQ(withIniLine(file, "Wayland", "InputMethod", "InputMethod=x"),
              "[Wayland]\nInputMethod=x\nVirtualKeyboardEnabled=true\n");
}

TEST(IniEdit, KeyThatOnlyBeginsAlikeIsAnother) {
    EXPECT_EQ(iniLine("[Wayland]\nInputMethodX=1\n", "Wayland", "InputMethod"), std::nullopt);
}

TEST(IniEdit, KeyThatIsAddedAndTakenAwayLeavesTheFileAsItWas) {
    const QByteArray with = withIniLine(kwinrc, "Xwayland", "XwaylandEavesdrops", "XwaylandEavesdrops=All");
    EXPECT_NE(with, kwinrc);
    EXPECT_EQ(withIniLine(with, "Xwayland", "XwaylandEavesdrops", std::nullopt), kwinrc);
}

} // namespace

} // namespace lorvane
