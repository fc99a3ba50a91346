// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/x11/X11Connection.h"
#include "ui/pill/PillDesktop.h"

namespace lorvane {

/// The windows that are on screen now as the window manager stacks them (_NET_CLIENT_LIST_STACKING of the
/// Extended Window Manager Hints), lowest first; absent without such a list. What is minimised or on another
/// workspace is left out. Few round trips, however many windows there are. Main thread.
[[nodiscard]] std::optional<std::vector<DesktopWindow>> readStackedWindows(X11Connection& connection);

} // namespace lorvane
