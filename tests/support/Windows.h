// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtCore/QList>
#include <QtCore/QString>

namespace lorvane {

// A top-level window as its manager lists it.
struct WindowInfo {
    quint32 id = 0;
    qint64 pid = 0; // 0 when the window does not say
    QString windowClass;
    QString title;
};

// The windows of $DISPLAY by the EWMH properties of its root, or those of a Wayland session as its compositor
// knows them. From one thread at a time, since each call sets
// the error handler of Xlib while it lasts. A window that is closed meanwhile reads as empty.
namespace windows {
// Oldest first.
QList<WindowInfo> all();
// id 0 when no window is active.
WindowInfo active();
// Asks the window manager, as a pager does. It happens later: wait for active().
void activate(quint32 id);
// Asks the window to close, as its title bar does.
void close(quint32 id);
} // namespace windows

} // namespace lorvane
