// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/doctor/DoctorProbes.h"
#include "platform/linux/atspi/AtspiBus.h"

namespace lorvane {

/// Fills in the probes that the accessibility bus answers: `accessibility`, `windowFields`, `programOf`.
/// Changes nothing on the desktop. `bus` may be connecting still: it is waited for, at most two seconds.
void addAccessibilityProbes(DoctorProbes& probes, AtspiBus& bus, Clock& clock,
                            const QDBusConnection& session);

/// Whether a host shows icons (StatusNotifierWatcher on the session bus).
void addTrayProbe(DoctorProbes& probes, const QDBusConnection& session);

/// From XDG_SESSION_TYPE, else from the displays that are named.
[[nodiscard]] SessionKind sessionKind(const QString& type, const QString& display,
                                      const QString& waylandDisplay);

} // namespace lorvane
