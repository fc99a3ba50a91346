// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "input/FieldAccess.h"

#include <QString>

#include <map>
#include <vector>

namespace lorvane {

/// Applications and their fields in memory. Answers at once, or after `delay` when one is set.
class FakeFieldAccess final : public FieldAccess {
 public:
    /// A field's whole text and its caret; without a text the field cannot be read.
    struct Field {
        std::optional<QString> text;
        qint64 caret = 0;
        bool multiLine = false;
    };

    explicit FakeFieldAccess(Clock& clock) : clock_(clock) {}

    QCoro::Task<std::optional<FieldElement>> focusedElement(ProcessId process, TaskScope scope) override;
    QCoro::Task<std::optional<FieldReading>> read(FieldElement element, TaskScope scope) override;
    void requestManualAccessibility(ProcessId process) override;
    QCoro::Task<bool> isSecureEventInputEnabled(TaskScope scope) override;

    /// Puts the focus of a process on a field; makes the field when it is new.
    FieldElement focus(ProcessId process, const QString& identity);
    /// The process has no focused field any more.
    void loseFocus(ProcessId process) { focused_.erase(process); }
    /// What the focus of a process becomes once it was asked to show its fields.
    void showsWhenAsked(ProcessId process, const QString& identity) { shownWhenAsked_[process] = identity; }
    [[nodiscard]] Field& field(const QString& identity) { return fields_[identity]; }

    bool secure = false;
    Duration delay = Duration::zero();
    int focusQueries = 0;
    std::vector<ProcessId> manualAccessibilityRequests;

 private:
    Clock& clock_;
    std::map<QString, Field> fields_;
    std::map<ProcessId, QString> focused_;
    std::map<ProcessId, QString> shownWhenAsked_;
};

} // namespace lorvane
