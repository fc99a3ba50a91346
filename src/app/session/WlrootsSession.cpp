// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session/WlrootsSession.h"

namespace lorvane {

WlrootsSession::WlrootsSession(const SessionParts& /*parts*/) {}

SessionPorts WlrootsSession::ports() { return {}; }

} // namespace lorvane
