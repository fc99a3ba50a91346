// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/clipboard/XcbConnection.h"

#include <deque>
#include <vector>

namespace lorvane {

/// Windows that receive the contents of selections. One whose read was not finished is not used again: its
/// owner may still answer, so it stays for a while and drops what arrives late, since a program whose
/// requestor vanishes may end from the error. Main thread.
class ReadingWindows {
 public:
    explicit ReadingWindows(XcbConnection& connection) : connection_(connection) {}
    ~ReadingWindows();
    ReadingWindows(const ReadingWindows&) = delete;
    ReadingWindows& operator=(const ReadingWindows&) = delete;

    [[nodiscard]] xcb_window_t take();
    void giveBack(xcb_window_t window) { idle_.push_back(window); }
    void retire(xcb_window_t window);

 private:
    struct Retired {
        xcb_window_t window;
        Handle events;
    };
    XcbConnection& connection_;
    std::vector<xcb_window_t> idle_;
    std::deque<Retired> retired_;
};

/// One window for the time of one read.
class ReadingWindow {
 public:
    explicit ReadingWindow(ReadingWindows& windows) : windows_(windows), window_(windows.take()) {}
    ~ReadingWindow();
    ReadingWindow(const ReadingWindow&) = delete;
    ReadingWindow& operator=(const ReadingWindow&) = delete;

    [[nodiscard]] xcb_window_t id() const { return window_; }
    /// Every conversion was answered to its end.
    void markClean() { isClean_ = true; }

 private:
    ReadingWindows& windows_;
    xcb_window_t window_;
    bool isClean_ = false;
};

} // namespace lorvane
