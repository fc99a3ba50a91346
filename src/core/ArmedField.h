// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Foundation.h"
#include "core/EditingKeys.h"
#include "core/TypingDecisions.h"
#include "input/FieldProber.h"

#include <QString>

#include <optional>

namespace lorvane {

/// The field that is typed into: reads it, moves its caret, takes typed text out of it. Every key is pressed
/// only while the field has the focus and can be read. Main thread.
class ArmedField {
 public:
    ArmedField(const Foundation& foundation, FieldAccess& fields, Workspace& workspace, EditingKeys& keys)
        : clock_(foundation.clock), log_(foundation.log), fields_(fields), keys_(keys),
          prober_(fields, workspace, foundation.clock) {}
    ArmedField(const ArmedField&) = delete;
    ArmedField& operator=(const ArmedField&) = delete;

    /// The field that has the keyboard in that process, and what stands there.
    QCoro::Task<std::optional<FieldElement>> focused(ProcessId process, TaskScope scope) {
        return prober_.focusedElementOfProcess(process, std::move(scope));
    }
    QCoro::Task<std::optional<FieldProbe>> probe(FieldElement element, TaskScope scope) {
        return prober_.probeField(std::move(element), std::move(scope));
    }
    /// A password field has the keyboard.
    QCoro::Task<bool> isSecure(TaskScope scope) {
        return fields_.isSecureEventInputEnabled(std::move(scope));
    }

    /// Nothing when typing is not armed, the focus is elsewhere, or the field does not answer.
    QCoro::Task<std::optional<CaretReading>> state(TypingAttempt typed, TaskScope scope);
    /// The same, once all that was posted stands in the field; what has not come after 0.4 s is missing. A
    /// field that does not answer is given 1.5 s before that.
    QCoro::Task<std::optional<CaretReading>> stateWithLateText(TypingAttempt typed, TaskScope scope);
    /// Right arrows; none at all when there would be too many of them.
    QCoro::Task<void> moveRight(TypingAttempt typed, qint64 times, TaskScope scope);
    /// Backspaces over everything typed. True when the field is as long as it was before.
    QCoro::Task<bool> takeBack(TypingAttempt typed, QString reason, TaskScope scope);

 private:
    QCoro::Task<bool> deleteTyped(TypingAttempt typed, QString tag, TaskScope scope);
    /// Whether the key would work on what was typed: the caret is behind `after`, and for a deletion what
    /// stands behind the caret is what stood there when armed. Waits a moment for a field that tells so.
    QCoro::Task<bool> awaitOurs(TypingAttempt typed, EditingKey key, qint64 after, TaskScope scope);
    /// Ends early when the key would work on something else.
    QCoro::Task<void> press(TypingAttempt typed, EditingKey key, qint64 times, qint64 after, TaskScope scope);

    Clock& clock_;
    DiagnosticLog& log_;
    FieldAccess& fields_;
    EditingKeys& keys_;
    FieldProber prober_;
};

} // namespace lorvane
