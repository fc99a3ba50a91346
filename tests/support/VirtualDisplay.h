// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QProcess>

namespace lorvane {

// An X server of the test's own, without a window manager, for tests in which the display goes away. $DISPLAY
// names it while this object lives. No Xlib connection of the test's process may stand when it ends, since
// Xlib ends the process then. Throws std::runtime_error when it does not come up.
class VirtualDisplay {
 public:
    VirtualDisplay();
    ~VirtualDisplay();
    VirtualDisplay(const VirtualDisplay&) = delete;
    VirtualDisplay& operator=(const VirtualDisplay&) = delete;

    // Ends the server with every connection to it; returns when it has gone. Runs no event loop.
    void end();

 private:
    QProcess server_;
    QByteArray before_;
};

} // namespace lorvane
