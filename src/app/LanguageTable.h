// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/DiagnosticLog.h"
#include "base/Localisation.h"
#include "base/Preferences.h"

namespace lorvane {

/// The words of the interface language: "AppleLanguages" when it is set, else the system's, as far as there
/// is a table. A table that cannot be read costs a log line and leaves the source texts.
[[nodiscard]] Localisation loadWords(const Preferences& preferences, DiagnosticLog& log);

} // namespace lorvane
