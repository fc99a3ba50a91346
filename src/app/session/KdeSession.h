// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/session/SessionPorts.h"

namespace lorvane {

/// What the KDE session gives. Made in every Wayland session: each road says for itself whether it is open.
/// Main thread.
class KdeSession {
 public:
    explicit KdeSession(const SessionParts& parts);

    [[nodiscard]] SessionPorts ports();
};

} // namespace lorvane
