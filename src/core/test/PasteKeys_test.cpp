// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/PasteKeys.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

struct KnownTerminal {
    const char* identifier;  // what its desktop entry is called
    const char* windowClass; // what is known of it without an entry
    PasteRoute route;
};

constexpr PasteRoute controlShiftV = PasteRoute::terminal;
constexpr PasteRoute shiftInsert = PasteRoute::primaryTerminal;

constexpr KnownTerminal terminals[]{
    {"Alacritty", "Alacritty", controlShiftV},
    {"com.gexperts.Tilix", "Tilix", controlShiftV},
    {"com.mitchellh.ghostty", "ghostty", controlShiftV},
    {"com.raggesilver.BlackBox", "BlackBox", controlShiftV},
    {"com.system76.CosmicTerm", "com.system76.CosmicTerm", controlShiftV},
    {"contour", "contour", controlShiftV},
    {"cool-retro-term", "cool-retro-term", controlShiftV},
    {"cutefish-terminal", "cutefish-terminal", controlShiftV},
    {"deepin-terminal", "deepin-terminal", controlShiftV},
    {"foot", "foot", controlShiftV},
    {"footclient", "footclient", controlShiftV},
    {"guake", "Guake", controlShiftV},
    {"io.elementary.terminal", "pantheon-terminal", controlShiftV},
    {"kitty", "kitty", controlShiftV},
    {"lxterminal", "Lxterminal", controlShiftV},
    {"mate-terminal", "Mate-terminal", controlShiftV},
    {"org.codeberg.dnkl.foot", "foot", controlShiftV},
    {"org.contourterminal.Contour", "contour", controlShiftV},
    {"org.gnome.Console", "kgx", controlShiftV},
    {"org.gnome.Ptyxis", "ptyxis", controlShiftV},
    {"org.gnome.Terminal", "Gnome-terminal", controlShiftV},
    {"gnome-terminal-server", "Gnome-terminal", controlShiftV},
    {"org.kde.konsole", "konsole", controlShiftV},
    {"org.kde.yakuake", "yakuake", controlShiftV},
    {"org.wezfurlong.wezterm", "wezterm-gui", controlShiftV},
    {"wezterm", "org.wezfurlong.wezterm", controlShiftV},
    {"qterminal", "qterminal", controlShiftV},
    {"qterminal-drop", "qterminal", controlShiftV},
    {"rio", "Rio", controlShiftV},
    {"roxterm", "Roxterm", controlShiftV},
    {"sakura", "Sakura", controlShiftV},
    {"tabby", "tabby", controlShiftV},
    {"terminator", "Terminator", controlShiftV},
    {"terminology", "terminology", controlShiftV},
    {"termite", "Termite", controlShiftV},
    {"tilda", "Tilda", controlShiftV},
    {"warp", "Warp", controlShiftV},
    {"xfce4-terminal", "Xfce4-terminal", controlShiftV},
    {"xfce4-terminal-emulator", "Xfce4-terminal", controlShiftV},
    {"debian-uxterm", "UXTerm", shiftInsert},
    {"debian-xterm", "XTerm", shiftInsert},
    {"mlterm", "mlterm", shiftInsert},
    {"rxvt", "Rxvt", shiftInsert},
    {"rxvt-unicode", "URxvt", shiftInsert},
    {"urxvtc", "URxvt", shiftInsert},
    {"st", "st-256color", shiftInsert},
};

PasteRoute routeOf(const QString& identifier, const QString& name) {
    return pasteRouteFor({4711, name, identifier});
}

TEST(PasteKeys, TerminalIsKnownByItsIdentifier) {
    for (const KnownTerminal& terminal : terminals) {
        EXPECT_EQ(routeOf(terminal.identifier, "Terminal"), terminal.route) << terminal.identifier;
    }
}

TEST(PasteKeys, TerminalWithoutADesktopEntryIsKnownByItsWindowClass) {
    for (const KnownTerminal& terminal : terminals) {
        const QString known = terminal.windowClass;
        EXPECT_EQ(routeOf(known, known), terminal.route) << terminal.windowClass;
        EXPECT_EQ(routeOf("org.example.unknown", known), terminal.route) << terminal.windowClass;
    }
}

TEST(PasteKeys, LetterCaseCountsForNothing) {
    for (const KnownTerminal& terminal : terminals) {
        const QString identifier = terminal.identifier;
        EXPECT_EQ(routeOf(identifier.toUpper(), {}), terminal.route) << terminal.identifier;
        EXPECT_EQ(routeOf(identifier.toLower(), {}), terminal.route) << terminal.identifier;
    }
}

TEST(PasteKeys, IdentifierGoesBeforeTheName) {
    EXPECT_EQ(routeOf("debian-xterm", "konsole"), shiftInsert);
    EXPECT_EQ(routeOf("org.kde.konsole", "XTerm"), controlShiftV);
}

TEST(PasteKeys, EveryOtherApplicationTakesTheStandardKeys) {
    for (const char* const known :
         {"", "org.xfce.mousepad", "firefox-esr", "chromium", "code", "libreoffice-writer", "Terminal",
          "xterminal", "konsole-settings", "org.gnome.Terminal.Preferences"}) {
        EXPECT_EQ(routeOf(known, known), PasteRoute::standard) << known;
    }
}

} // namespace

} // namespace lorvane
