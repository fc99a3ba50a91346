// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/atspi/AtspiBus.h"

namespace lorvane {

/// What one process shows of itself on the accessibility bus.
struct ShownApplication {
    ProcessId process = 0;
    QString name;
    QString toolkit;
    /// It was asked and did not answer in time.
    bool silent = false;
    /// Text fields that can be edited: some can be read, some can be written through the interface besides,
    /// and some are the screen of a terminal.
    int readableFields = 0;
    int writableFields = 0;
    int terminals = 0;
    /// A web page is shown with what is in it.
    bool hasWebContent = false;
};

/// Goes once through everything that applications show of themselves: for a report, not for the work of
/// dictation.
class AtspiSurvey {
 public:
    /// An application with more objects is looked at as far as this.
    static constexpr int mostObjects = 4000;

    explicit AtspiSurvey(AtspiBus& bus) : bus_(bus) {}

    QCoro::Task<std::vector<ShownApplication>> run(TaskScope scope);

 private:
    using Objects = std::vector<AccessibleRef>;
    QCoro::Task<ShownApplication> examine(AccessibleRef application, TaskScope scope);
    QCoro::Task<void> count(Objects objects, ShownApplication* into, TaskScope scope);
    QCoro::Task<Objects> childrenOf(Objects parents, ShownApplication* into, TaskScope scope);

    AtspiBus& bus_;
};

} // namespace lorvane
