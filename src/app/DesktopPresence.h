// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/PlainPresence.h"
#include "base/Foundation.h"

namespace lorvane {

/// What the program shows of itself. Needs an application with windows.
struct DesktopPresence {
    explicit DesktopPresence(const Foundation& foundation);

    NoPill pill;
    NoWindows windows;
};

} // namespace lorvane
