// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

#include <QString>

namespace lorvane {

/// Dates in files: seconds since 2001-01-01 00:00:00 UTC as a double. A double that was read is written back
/// as the very same double; between a WallTime and a double at most the double's own rounding is lost.
[[nodiscard]] double toFileDate(WallTime time);
[[nodiscard]] WallTime fromFileDate(double secondsSinceReference);

/// A new random identifier, upper case, without braces.
[[nodiscard]] QString newUuid();

/// "yyyy-MM-dd" in the local time zone, with the digits of the C locale.
[[nodiscard]] QString dayKey(WallTime time);

} // namespace lorvane
