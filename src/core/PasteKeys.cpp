// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/PasteKeys.h"

#include <QHash>
#include <QStringList>

namespace lorvane {

namespace {

// By the identifier or the name of the application, in lower case: desktop entries and window classes both.
// Ctrl+V is a key of the terminal's own program in all of them.
const QHash<QString, PasteRoute>& terminals() {
    static const QHash<QString, PasteRoute> table = [] {
        QHash<QString, PasteRoute> routes;
        const QStringList byControlShiftV{"alacritty",
                                          "blackbox",
                                          "com.mitchellh.ghostty",
                                          "com.raggesilver.blackbox",
                                          "com.gexperts.tilix",
                                          "com.system76.cosmicterm",
                                          "contour",
                                          "cool-retro-term",
                                          "cutefish-terminal",
                                          "deepin-terminal",
                                          "foot",
                                          "footclient",
                                          "ghostty",
                                          "gnome-terminal",
                                          "gnome-terminal-server",
                                          "guake",
                                          "io.elementary.terminal",
                                          "kgx",
                                          "kitty",
                                          "konsole",
                                          "lxterminal",
                                          "mate-terminal",
                                          "org.codeberg.dnkl.foot",
                                          "org.contourterminal.contour",
                                          "org.gnome.console",
                                          "org.gnome.ptyxis",
                                          "org.gnome.terminal",
                                          "org.kde.konsole",
                                          "org.kde.yakuake",
                                          "org.wezfurlong.wezterm",
                                          "pantheon-terminal",
                                          "ptyxis",
                                          "qterminal",
                                          "qterminal-drop",
                                          "rio",
                                          "roxterm",
                                          "sakura",
                                          "tabby",
                                          "terminator",
                                          "terminology",
                                          "termite",
                                          "tilda",
                                          "tilix",
                                          "warp",
                                          "wezterm",
                                          "wezterm-gui",
                                          "xfce4-terminal",
                                          "xfce4-terminal-emulator",
                                          "yakuake"};
        const QStringList byPrimary{"debian-uxterm", "debian-xterm", "mlterm", "rxvt",   "rxvt-unicode", "st",
                                    "st-256color",   "urxvt",        "urxvtc", "uxterm", "xterm"};
        for (const QString& name : byControlShiftV) {
            routes.insert(name, PasteRoute::terminal);
        }
        for (const QString& name : byPrimary) {
            routes.insert(name, PasteRoute::primaryTerminal);
        }
        return routes;
    }();
    return table;
}

} // namespace

PasteRoute pasteRouteFor(const RunningApplication& application) {
    const auto& table = terminals();
    const QString identifier = application.bundleIdentifier.toLower();
    return table.value(identifier, table.value(application.localizedName.toLower(), PasteRoute::standard));
}

} // namespace lorvane
