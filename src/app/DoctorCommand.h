// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace lorvane {

/// Examines this desktop and prints the report to standard output, as text or as one JSON object. The exit
/// status: 0 when dictation works, else 1. Changes nothing on the desktop.
[[nodiscard]] int runDoctor(bool json);

} // namespace lorvane
