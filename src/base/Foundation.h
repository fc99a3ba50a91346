// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "base/DiagnosticLog.h"
#include "base/Localisation.h"
#include "base/Preferences.h"

namespace lorvane {

/// The four things that nearly every class works with. References only; the composition root owns what they
/// name.
struct Foundation {
    Clock& clock;
    Preferences& preferences;
    const Localisation& words;
    DiagnosticLog& log;
};

} // namespace lorvane
