// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/Notification.h"
#include "app/PlainPresence.h"
#include "app/ShellWindows.h"
#include "ui/windows/QuickWindows.h"

namespace lorvane {

/// What the program shows of itself: the pill and the windows. Needs an application with windows.
struct DesktopPresence {
    DesktopPresence(const Foundation& foundation, const QDBusConnection& session,
                    RecentDictations& dictations);

    Notification notification;
    Appearance appearance;
    QuickWindows factory;
    NoPill pill;
    ShellWindows windows;
};

} // namespace lorvane
