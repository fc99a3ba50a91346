// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/DiagnosticLog.h"
#include "input/FieldAccess.h"
#include "platform/linux/atspi/AccessibilitySwitch.h"
#include "platform/linux/atspi/FieldReader.h"
#include "platform/linux/atspi/FocusSearch.h"

#include <QHash>

namespace lorvane {

/// The object behind an element that AtspiFieldAccess gave.
[[nodiscard]] AccessibleRef accessibleOf(const FieldElement& element);

/// The fields of other applications over the accessibility bus. The focus is known from events; a search
/// through the windows happens only for a process of which none has told yet, and not again at once. This
/// very process is asked like any other: nothing here waits, so its main loop answers itself. Main thread.
class AtspiFieldAccess final : public FieldAccess {
 public:
    AtspiFieldAccess(AtspiBus& bus, AccessibilitySwitch& accessibilitySwitch, const Workspace& workspace,
                     Clock& clock);

    QCoro::Task<std::optional<FieldElement>> focusedElement(ProcessId process, TaskScope scope) override;
    QCoro::Task<std::optional<FieldReading>> read(FieldElement element, TaskScope scope) override;
    void requestManualAccessibility(ProcessId process) override;
    QCoro::Task<bool> isSecureEventInputEnabled(TaskScope scope) override;

    /// For what else goes to the same applications (AtspiInsertion).
    [[nodiscard]] FieldReader& reader() { return reader_; }
    [[nodiscard]] PatienceList& patience() { return patience_; }

 private:
    QCoro::Task<std::optional<AccessibleRef>> findFocus(ProcessId process, Instant deadline, TaskScope scope);
    QCoro::Task<std::optional<AccessibleRef>> search(ProcessId process, Instant deadline, TaskScope scope);
    /// Whether the field has the focus still; absent when its application is silent.
    QCoro::Task<std::optional<bool>> stillFocused(AccessibleRef field, Instant deadline, TaskScope scope);
    QCoro::Task<void> lookOnce(TaskScope scope);
    /// Asks a silent application once more, with all the time it is put aside for.
    void awaitAnswer(const QString& bus);
    void handle(const FocusEvent& event);
    void connectionChanged();
    [[nodiscard]] Instant deadline() const;

    AtspiBus& bus_;
    AccessibilitySwitch& switch_;
    const Workspace& workspace_;
    Clock& clock_;
    PatienceList patience_{[this](const QString& bus) { awaitAnswer(bus); }};
    FocusTracker tracker_;
    FocusSearch search_;
    FieldReader reader_;
    struct Searched {
        std::optional<AccessibleRef> found;
        Instant until;
    };
    /// What the last search gave where no event has told, until it may be repeated.
    QHash<ProcessId, Searched> searched_;
    Handle events_;
    Handle connection_;
    TaskHandle firstLook_;
    TaskGroup awaited_;
};

} // namespace lorvane
