// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/setup/SetupPlan.h"
#include "platform/linux/gnome/ShellExtensionSetup.h"

#include <QDBusConnection>

namespace lorvane {

/// What tells desktops apart, as the environment and the bus have it.
struct DesktopSigns {
    /// $WAYLAND_DISPLAY or $XDG_SESSION_TYPE speak of Wayland.
    bool isWayland = false;
    /// The names that somebody has on the session bus.
    QStringList busNames;
    bool hasSwaySocket = false;
    bool hasHyprland = false;
    bool hasNiri = false;
};

[[nodiscard]] SetupDesktop desktopFrom(const DesktopSigns& signs);
/// The installed desktop entry that makes `helper` an input method of KWin: the first in these folders; empty
/// when there is none.
[[nodiscard]] QString inputMethodEntry(const QString& helper, const QStringList& folders);
/// Our extension of the GNOME Shell, with its files as they are beside the program.
[[nodiscard]] ShellExtensionSetup shellExtension(const QDBusConnection& session);

/// Looks at this machine and session; waits for the bus at most some seconds.
[[nodiscard]] SetupFacts probeSetup(const QDBusConnection& session);

} // namespace lorvane
