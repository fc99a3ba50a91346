// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "input/Workspace.h"
#include "platform/linux/x11/X11Connection.h"

#include <QString>

#include <vector>

namespace lorvane {

/// A window of an application, as its user sees it.
struct ListedWindow {
    ProcessId process = 0;
    QString title;
    QString windowClass;
};

/// The windows that the window manager lists (_NET_CLIENT_LIST), oldest first, as far as they tell their
/// process. Some round trips a window: for a report, not for the work of dictation. Main thread.
[[nodiscard]] std::vector<ListedWindow> listWindows(X11Connection& connection);

} // namespace lorvane
