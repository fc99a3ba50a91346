// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "input/Workspace.h"
#include "platform/linux/x11/X11Connection.h"

#include <QByteArray>

#include <cstdint>
#include <vector>

namespace lorvane {

/// What a window says of itself; empty when it says nothing or is gone. A round trip.
[[nodiscard]] QByteArray windowProperty(X11Connection& connection, xcb_window_t window, const char* name);
/// The same as a list of numbers.
[[nodiscard]] std::vector<std::uint32_t> windowNumbers(X11Connection& connection, xcb_window_t window,
                                                       const char* name);
/// Whose window it is; 0 when nobody knows. The server's own knowledge (XRes) goes first: what a window says
/// of itself is wrong in a sandbox that has its own process numbers, and the clipboard's requests are told
/// apart by the server's knowledge too.
[[nodiscard]] ProcessId processOfWindow(X11Connection& connection, xcb_window_t window);

} // namespace lorvane
