// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/DesktopAdapters.h"
#include "app/Notification.h"
#include "app/ShellWindows.h"
#include "platform/linux/appearance/PortalComfort.h"
#include "ui/pill/PillDesktop.h"
#include "ui/pill/PillHost.h"
#include "ui/windows/QuickWindows.h"

namespace lorvane {

/// What the program shows of itself: the pill and the windows. Needs an application with windows.
struct DesktopPresence {
    DesktopPresence(const Foundation& foundation, const QDBusConnection& session, DesktopAdapters& desktop,
                    RecentDictations& dictations);

    void host(std::unique_ptr<PillView> view) { pill->host(std::move(view)); }

    Notification notification;
    Appearance appearance;
    QuickWindows factory;
    PortalComfort comfort;
    std::unique_ptr<PillDesktop> pillDesktop;
    std::unique_ptr<PillSurface> pillSurface;
    /// Shows nothing until it hosts its view.
    std::unique_ptr<PillHost> pill;
    ShellWindows windows;

 private:
    void makePill(const Foundation& foundation, DesktopAdapters& desktop);
};

} // namespace lorvane
