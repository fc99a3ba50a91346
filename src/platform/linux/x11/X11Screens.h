// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/x11/X11Connection.h"
#include "ui/pill/PillDesktop.h"

namespace lorvane {

/// The monitors (RandR 1.5), the main one first, and what the desktop's panels leave free of each: what GNOME
/// says of each monitor (_GTK_WORKAREAS_D<n>), else what the windows reserve for themselves
/// (_NET_WM_STRUT_PARTIAL) and, with a single monitor, _NET_WORKAREA; both of the Extended Window Manager
/// Hints. Some round trips; main thread.
[[nodiscard]] std::vector<DesktopScreen> readScreens(X11Connection& connection);

} // namespace lorvane
