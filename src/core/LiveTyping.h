// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Foundation.h"
#include "base/Task.h"
#include "input/Workspace.h"

#include <QString>

namespace lorvane {

/// How the final text stands to what was typed while it streamed.
enum class SettleOutcome {
    landed,   ///< the field holds the text
    paste,    ///< nothing of it is in the field
    handOver, ///< the field holds something that could not be taken back
};

/// Types a take's text into the focused field while it streams. Typing is not built yet: it never arms, so
/// that every text is pasted whole. Main thread.
class LiveTyping {
 public:
    LiveTyping(const Foundation& foundation, Workspace& workspace)
        : log_(foundation.log), workspace_(workspace) {}

    /// At the start of each attempt: aims at the field that has the focus, or says why not.
    QCoro::Task<void> armTyping(TaskScope scope);
    /// One fragment of the stream. Returns when it stands in the field, or at once when typing is not armed.
    QCoro::Task<void> typeLive(QString fragment, TaskScope scope);
    QCoro::Task<SettleOutcome> settleTyping(QString text, TaskScope scope);
    /// Takes back what was typed. True when the field is as it was.
    QCoro::Task<bool> abandonTyping(QString reason, TaskScope scope);

 private:
    DiagnosticLog& log_;
    Workspace& workspace_;
};

} // namespace lorvane
