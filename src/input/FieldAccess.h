// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Task.h"
#include "input/Workspace.h"

#include <QString>

#include <memory>
#include <optional>

namespace lorvane {

/// The identity of one field of one application. Equal when it is the same field.
class FieldElement {
 public:
    explicit FieldElement(QString identity, std::shared_ptr<const void> reference = {})
        : identity_(std::move(identity)), reference_(std::move(reference)) {}
    [[nodiscard]] const QString& identity() const { return identity_; }
    /// The adapter's own hold on the field.
    [[nodiscard]] const std::shared_ptr<const void>& reference() const { return reference_; }
    friend bool operator==(const FieldElement& a, const FieldElement& b) {
        return a.identity_ == b.identity_;
    }

 private:
    QString identity_;
    std::shared_ptr<const void> reference_;
};

/// What one read of a field gave, in UTF-16 units whatever the toolkit counts.
struct FieldReading {
    qint64 length = 0;
    /// The start of the selection.
    qint64 caret = 0;
    /// The text behind the caret, or as much of it as tells whether it is blank.
    QString afterCaret;
    /// The field takes several lines. False when its application does not tell.
    bool multiLine = false;
};

/// Reads the fields of other applications. Main thread; every wait is bounded by 150 ms, and what cannot be
/// had in that time, or at all, is absent.
class FieldAccess {
 public:
    virtual ~FieldAccess() = default;

    /// The field of that process that has the keyboard.
    virtual QCoro::Task<std::optional<FieldElement>> focusedElement(ProcessId process, TaskScope scope) = 0;
    /// Absent when the field's value is no text or its caret cannot be told.
    virtual QCoro::Task<std::optional<FieldReading>> read(FieldElement element, TaskScope scope) = 0;
    /// Asks an application that shows no fields to show them ("AXManualAccessibility"). No answer.
    virtual void requestManualAccessibility(ProcessId process) = 0;
    /// A password field has the keyboard.
    virtual QCoro::Task<bool> isSecureEventInputEnabled(TaskScope scope) = 0;
};

} // namespace lorvane
