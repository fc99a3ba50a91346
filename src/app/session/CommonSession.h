// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/session/SessionPorts.h"

namespace lorvane {

/// What any desktop may have, after what is its own: the desktop portal, and key devices read directly. Made
/// in every Wayland session: each road says for itself whether it is open. Main thread.
class CommonSession {
 public:
    explicit CommonSession(const SessionParts& parts);

    [[nodiscard]] SessionPorts ports();
};

} // namespace lorvane
