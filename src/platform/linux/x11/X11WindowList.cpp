// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/X11WindowList.h"

#include "platform/linux/x11/X11Properties.h"

namespace lorvane {

namespace {

QString titleOf(X11Connection& connection, xcb_window_t window) {
    const QByteArray modern = windowProperty(connection, window, "_NET_WM_NAME");
    return modern.isEmpty() ? QString::fromLatin1(windowProperty(connection, window, "WM_NAME"))
                            : QString::fromUtf8(modern);
}

// WM_CLASS holds two texts, each ended by a zero: the instance and the class.
QString classOf(X11Connection& connection, xcb_window_t window) {
    return QString::fromLatin1(windowProperty(connection, window, "WM_CLASS").split('\0').value(1));
}

} // namespace

std::vector<ListedWindow> listWindows(X11Connection& connection) {
    std::vector<ListedWindow> windows;
    for (const xcb_window_t window : windowNumbers(connection, connection.root(), "_NET_CLIENT_LIST")) {
        if (const ProcessId process = processOfWindow(connection, window)) {
            windows.push_back({process, titleOf(connection, window), classOf(connection, window)});
        }
    }
    return windows;
}

} // namespace lorvane
