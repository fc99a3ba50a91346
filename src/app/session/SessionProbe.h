// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/session/SessionFacts.h"
#include "base/Clock.h"
#include "platform/linux/wayland/WaylandConnection.h"
#include "platform/linux/x11/X11Connection.h"

namespace lorvane {

/// The facts by these connections. Waits for the compositor's list, at most two seconds; one that has not
/// answered by then counts as none.
[[nodiscard]] SessionFacts factsOf(X11Connection& display, WaylandConnection& wayland, const Clock& clock);

/// The same by connections of its own that are closed again; for the time before there is an application.
[[nodiscard]] SessionFacts probeSession();

} // namespace lorvane
