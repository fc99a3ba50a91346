// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/Notification.h"
#include "app/ShellWindows.h"
#include "platform/linux/appearance/PortalComfort.h"
#include "platform/linux/x11/X11PillDesktop.h"
#include "ui/pill/PillPanel.h"
#include "ui/windows/QuickWindows.h"

namespace lorvane {

/// What the program shows of itself: the pill and the windows. Needs an application with windows.
struct DesktopPresence {
    DesktopPresence(const Foundation& foundation, const QDBusConnection& session, X11Connection& display,
                    RecentDictations& dictations);

    Notification notification;
    Appearance appearance;
    QuickWindows factory;
    PortalComfort comfort;
    X11PillDesktop pillDesktop;
    X11PillSurface pillSurface;
    /// Absent without a display. Shows nothing until it hosts its view.
    std::unique_ptr<PillPanel> pill;
    ShellWindows windows;
};

} // namespace lorvane
