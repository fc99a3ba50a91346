// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/LanguageTable.h"
#include "base/Foundation.h"
#include "platform/linux/desktop/JsonPreferenceStore.h"
#include "platform/linux/desktop/QtClock.h"

namespace lorvane {

/// The real foundation: clock, log, preferences and words of this user.
class Stores {
 public:
    /// `console`: where the log's lines go besides its file; standard error when it is left empty.
    explicit Stores(DiagnosticLog::Console console = {});
    [[nodiscard]] const Foundation& foundation() const { return foundation_; }

 private:
    QtClock clock_;
    DiagnosticLog log_;
    JsonPreferenceStore store_;
    Preferences preferences_{store_};
    Localisation words_;
    Foundation foundation_{clock_, preferences_, words_, log_};
};

/// $XDG_DATA_HOME/Tirra
[[nodiscard]] QString dataFolder();

} // namespace lorvane
