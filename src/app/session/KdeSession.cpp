// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session/KdeSession.h"

namespace lorvane {

KdeSession::KdeSession(const SessionParts& /*parts*/) {}

SessionPorts KdeSession::ports() { return {}; }

} // namespace lorvane
