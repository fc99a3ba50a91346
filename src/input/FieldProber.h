// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "input/FieldProbe.h"
#include "input/Workspace.h"

#include <optional>
#include <set>

namespace lorvane {

/// The field that live typing writes into.
struct TypingField {
    ProcessId target = 0;
    FieldElement element;
};

/// What `typingFieldState` tells of it.
struct TypingFieldState {
    FieldElement element;
    qint64 length = 0;
    qint64 caret = 0;
};

/// Finds the field that has the keyboard and reads it. Main thread. Keeps nothing of a field; remembers only
/// which processes were asked to show their fields.
class FieldProber {
 public:
    FieldProber(FieldAccess& fields, Workspace& workspace, Clock& clock)
        : fields_(fields), workspace_(workspace), clock_(clock) {}
    FieldProber(const FieldProber&) = delete;
    FieldProber& operator=(const FieldProber&) = delete;

    /// The focused field of a process. One that shows none is asked once in this run to show its fields, and
    /// is then looked at once more.
    QCoro::Task<std::optional<FieldElement>> focusedElementOfProcess(ProcessId process, TaskScope scope);
    QCoro::Task<std::optional<FieldProbe>> probeField(FieldElement element, TaskScope scope);

    /// Nothing unless the target is in front, its focus is still on the field, and the field can be read.
    QCoro::Task<std::optional<TypingFieldState>> typingFieldState(TypingField field, TaskScope scope);
    /// Whether the field came to have that length before `timeout` was over; looks every 5 ms.
    QCoro::Task<bool> waitForFieldLength(TypingField field, qint64 wanted, Duration timeout, TaskScope scope);

 private:
    FieldAccess& fields_;
    Workspace& workspace_;
    Clock& clock_;
    std::set<ProcessId> manualAccessibilityAsked_;
};

} // namespace lorvane
