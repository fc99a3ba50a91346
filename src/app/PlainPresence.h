// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Presence.h"

namespace lorvane {

/// No pill is drawn; the phase is followed over the session bus, and notices are notifications.
class NoPill final : public Pill {
 public:
    void show() override {}
    void orderOut() override {}
};

} // namespace lorvane
