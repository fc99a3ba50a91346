// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session/GnomeSession.h"

namespace lorvane {

GnomeSession::GnomeSession(const SessionParts& /*parts*/) {}

SessionPorts GnomeSession::ports() { return {}; }

} // namespace lorvane
