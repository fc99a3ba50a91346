// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Handle.h"
#include "base/Signal.h"
#include "input/Workspace.h"
#include "platform/linux/x11/DesktopEntries.h"
#include "platform/linux/x11/X11Connection.h"

namespace lorvane {

/// The application in front, from the window that the window manager calls active (_NET_ACTIVE_WINDOW of the
/// Extended Window Manager Hints). Looked up when that changes and remembered. Main thread.
class X11Workspace final : public Workspace {
 public:
    X11Workspace(X11Connection& connection, DesktopEntries entries);
    X11Workspace(const X11Workspace&) = delete;
    X11Workspace& operator=(const X11Workspace&) = delete;

    [[nodiscard]] std::optional<RunningApplication> frontmostApplication() const override { return front_; }
    /// Told when another window became active.
    [[nodiscard]] Handle onActiveWindowChanged(std::function<void()> observer) {
        return changed_.subscribe(std::move(observer));
    }
    /// Whether the active window is one of this process.
    [[nodiscard]] bool isOwnProcessInFront() const;

 private:
    void handleEvent(const xcb_generic_event_t& event);
    void readActiveWindow();
    /// False when there is no such window.
    [[nodiscard]] bool watchForItsEnd(xcb_window_t window);
    void setFront(xcb_window_t window, std::optional<RunningApplication> application);
    [[nodiscard]] RunningApplication applicationOf(xcb_window_t window);

    X11Connection& connection_;
    DesktopEntries entries_;
    xcb_window_t active_ = XCB_WINDOW_NONE;
    std::optional<RunningApplication> front_;
    Signal<> changed_;
    Handle events_;
    Handle lost_;
};

} // namespace lorvane
