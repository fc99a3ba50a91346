// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Task.h"
#include "input/FieldProber.h"

#include <optional>

namespace lorvane {

/// What the field shows of a text that was pasted.
enum class PasteSight {
    standing,  ///< the caret is behind the text, with what stood behind it before
    untouched, ///< the field is as it was
    unclear,   ///< it cannot be read, or something else has happened there
};

/// Looks at the field that is pasted into. It proves a paste and refutes none: programs change line ends and
/// blanks, and tell late. Main thread.
class PasteWatch {
 public:
    struct Before {
        TypingField field;
        /// UTF-16 units.
        qint64 length = 0;
        qint64 caret = 0;
    };

    PasteWatch(FieldAccess& fields, Workspace& workspace, Clock& clock)
        : fields_(fields), clock_(clock), prober_(fields, workspace, clock) {}

    /// The field that has the keyboard in that process; nothing when it cannot be read.
    QCoro::Task<std::optional<Before>> look(ProcessId target, TaskScope scope);
    /// Waits for `units` more in the field, `patience` at most. `standing` is said as soon as it is seen.
    QCoro::Task<PasteSight> follow(std::optional<Before> before, qint64 units, Duration patience,
                                   TaskScope scope);

 private:
    QCoro::Task<PasteSight> sight(Before before, qint64 units, TaskScope scope);

    FieldAccess& fields_;
    Clock& clock_;
    FieldProber prober_;
};

} // namespace lorvane
