// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Task.h"
#include "platform/linux/x11/X11Connection.h"

#include <map>

namespace lorvane {

/// Asks the active window for a sign of life (_NET_WM_PING of the Extended Window Manager Hints). The
/// application answers in the order of its events, so the answer tells that it has seen all before. Main
/// thread.
class WindowPing {
 public:
    WindowPing(X11Connection& connection, Clock& clock);
    WindowPing(const WindowPing&) = delete;
    WindowPing& operator=(const WindowPing&) = delete;
    ~WindowPing() { end(); }

    /// Whether the application answered within 100 ms; false at once when its window knows no such question,
    /// or has left the first one without an answer: some answer to the window manager alone.
    QCoro::Task<bool> answer(TaskScope scope);
    /// No more questions for now: the answers, which come to the root window with much else, are not listened
    /// to any more.
    void end();

 private:
    [[nodiscard]] xcb_window_t askedWindow();
    void listen(bool on);
    void ask(xcb_window_t window);
    void handleEvent(const xcb_generic_event_t& event);

    X11Connection& connection_;
    Clock& clock_;
    bool listening_ = false;
    xcb_window_t window_ = XCB_WINDOW_NONE;
    /// Far from what window managers number their own questions by, which see our answers as well.
    std::uint32_t stamp_ = 0xA0000000;
    Completion<bool> answered_;
    /// Whether it answers, of windows that have been asked.
    std::map<xcb_window_t, bool> answers_;
    Handle events_;
};

} // namespace lorvane
