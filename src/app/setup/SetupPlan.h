// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Localisation.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vector>

namespace lorvane {

enum class SetupTopic {
    hold,  ///< the key that is held to dictate
    typing ///< text and keys in fields that offer no insertion
};

enum class SetupDesktop { x11, gnome, kde, sway, hyprland, niri, other };

/// What a plan is made from.
struct SetupFacts {
    SetupDesktop desktop = SetupDesktop::other;
    /// The user's own folders: $XDG_CONFIG_HOME and $XDG_DATA_HOME.
    QString configFolder;
    QString dataFolder;
    /// Absolute paths of the program and of the input method that comes with it; empty when there is none.
    QString program;
    QString inputMethod;
    /// There is an extension of ours for the GNOME Shell that runs, and it is in place already.
    bool hasShellExtension = false;
    bool isShellExtensionInPlace = false;
    /// It is in place, and the Shell that runs has not loaded it.
    bool isShellExtensionForNextLogin = false;
    /// It is in place, but not as it comes with this program.
    bool isShellExtensionOutdated = false;
    /// The installed desktop entry of the input method; empty when the program is not installed.
    QString inputMethodEntry;
    /// What KWin has as its virtual keyboard now.
    QString chosenInputMethod;
    /// There is an X server beside KWin, and KWin shows it the modifiers (or more) already.
    bool hasX = false;
    bool showsModifiers = false;
    /// The user asked for key devices.
    bool keyDevices = false;
    bool mayReadDevices = false;
    /// The portal can be allowed, once and for all, to post keys.
    bool portalPostsKeys = false;
    QString userName;
};

/// A file that is written whole.
struct SetupFile {
    QString path;
    QByteArray content;
};

/// One key of a settings file, which is otherwise left alone.
struct SetupKey {
    QString path;
    QByteArray group;
    QByteArray key;
    QByteArray value;
};

/// What is done for a topic, in the order of the fields, and how it is told. A plan with no change says in
/// `told` why there is none.
struct SetupPlan {
    /// Sentences for the user, before anything is done.
    QStringList told;
    std::vector<SetupFile> files;
    std::vector<SetupKey> keys;
    bool placesShellExtension = false;
    bool switchesDevicesOn = false;
    bool asksPortal = false;
    /// Programs that make the desktop look again; run after a change and after its undoing. One that is
    /// missing or fails does no harm.
    std::vector<QStringList> refreshes;
    /// What the user has to do in the end.
    QStringList afterwards;

    [[nodiscard]] bool changesAnything() const;
};

[[nodiscard]] SetupPlan planSetup(SetupTopic topic, const SetupFacts& facts, const Localisation& words);

/// How to bind the commands start, stop and toggle in that desktop, ready to be copied.
[[nodiscard]] QString bindingLines(SetupDesktop desktop);

} // namespace lorvane
