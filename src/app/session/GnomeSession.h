// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/session/SessionPorts.h"

namespace lorvane {

/// What the GNOME session gives, and IBus wherever it runs. Made in every Wayland session: each road says for
/// itself whether it is open. Main thread.
class GnomeSession {
 public:
    explicit GnomeSession(const SessionParts& parts);

    [[nodiscard]] SessionPorts ports();
};

} // namespace lorvane
