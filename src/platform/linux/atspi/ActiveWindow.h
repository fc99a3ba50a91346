// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/atspi/FocusTracker.h"

#include <QList>
#include <QString>

#include <optional>

namespace lorvane {

/// Which window of all applications is in front, by what the applications say; a pure value over their
/// events. The last one that became active is it. That a window is active no more is believed only of the one
/// in front, since "the new one is active" often comes before "the old one is not".
class ActiveWindow {
 public:
    /// Whether the window in front is another one now, or none.
    bool handle(const FocusEvent& event);
    /// A window that was found to be active without an event.
    void remember(const AccessibleRef& window);
    /// The application is gone. Whether the window in front went with it.
    bool forget(const QString& bus);

    [[nodiscard]] const std::optional<AccessibleRef>& window() const { return window_; }
    /// Windows that were in front before, the last one first: one of them may be so again without a word,
    /// when the shell's menu above it closes.
    [[nodiscard]] const QList<AccessibleRef>& before() const { return before_; }

 private:
    bool bringToFront(const AccessibleRef& window);

    std::optional<AccessibleRef> window_;
    QList<AccessibleRef> before_;
};

} // namespace lorvane
