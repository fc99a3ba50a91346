// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session/CommonSession.h"

namespace lorvane {

CommonSession::CommonSession(const SessionParts& /*parts*/) {}

SessionPorts CommonSession::ports() { return {}; }

} // namespace lorvane
