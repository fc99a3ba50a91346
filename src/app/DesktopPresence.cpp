// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DesktopPresence.h"

namespace lorvane {

DesktopPresence::DesktopPresence(const Foundation& foundation) : windows(foundation) {}

} // namespace lorvane
