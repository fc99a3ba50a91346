// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/session/SessionPorts.h"

namespace lorvane {

/// What compositors with the protocols of wlroots give, and sway by its socket. Made in every Wayland
/// session: each road says for itself whether it is open. Main thread.
class WlrootsSession {
 public:
    explicit WlrootsSession(const SessionParts& parts);

    [[nodiscard]] SessionPorts ports();
};

} // namespace lorvane
