// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QWindow;

namespace lorvane {

/// Whether the window, which is on screen, stands in the task bar and in the window switcher
/// (_NET_WM_STATE_SKIP_TASKBAR and _SKIP_PAGER of the EWMH). Without an X display it does nothing.
void setInTaskbar(const QWindow& window, bool wanted);

} // namespace lorvane
