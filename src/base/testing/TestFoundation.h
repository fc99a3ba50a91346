// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Foundation.h"
#include "base/testing/MemoryPreferenceStore.h"
#include "base/testing/VirtualClock.h"

#include <QStringList>

namespace lorvane {

/// A foundation of fakes: virtual time, preferences in memory, source texts as words, log lines kept in
/// `lines`.
struct TestFoundation {
    VirtualClock clock;
    MemoryPreferenceStore store;
    Preferences preferences{store};
    Localisation words;
    QStringList lines;
    DiagnosticLog log{clock, std::nullopt, [this](const QString& line) { lines.append(line); }};
    Foundation foundation{clock, preferences, words, log};
};

} // namespace lorvane
