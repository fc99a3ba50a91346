// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/x11/X11Connection.h"

#include <QString>

namespace lorvane {

/// What an X display can do for the program.
struct X11Capabilities {
    bool displayAnswers = false;
    X11Connection::Version inputVersion;
    bool hasXTest = false;
    bool hasXkb = false;
    /// Tells which process a window or a request of the clipboard belongs to.
    bool hasXRes = false;
    /// Empty when no window manager says its name.
    QString windowManager;

    /// The keys of the desktop can be watched, also while another program has grabbed the keyboard.
    [[nodiscard]] bool canWatchKeys() const;
    /// Synthetic keys can be made.
    [[nodiscard]] bool canPostKeys() const { return hasXTest && hasXkb; }
};

/// Asks the display; a few round trips.
[[nodiscard]] X11Capabilities capabilitiesOf(X11Connection& connection);

} // namespace lorvane
