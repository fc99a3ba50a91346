// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Signal.h"
#include "input/Workspace.h"
#include "platform/linux/atspi/ActiveWindow.h"
#include "platform/linux/atspi/AtspiBus.h"

#include <functional>
#include <map>

namespace lorvane {

/// The application in front, where no window system tells: by the windows that say on the accessibility bus
/// that they are active. An application that shows nothing there is never in front, and where none says so
/// (the compositor's overview) nothing is. Main thread.
class AtspiWorkspace final : public Workspace {
 public:
    /// What the user calls the application of that process, which calls itself `shownName` on the bus.
    using Naming = std::function<RunningApplication(ProcessId process, const QString& shownName)>;

    AtspiWorkspace(AtspiBus& bus, Naming naming);
    AtspiWorkspace(const AtspiWorkspace&) = delete;
    AtspiWorkspace& operator=(const AtspiWorkspace&) = delete;

    [[nodiscard]] std::optional<RunningApplication> frontmostApplication() const override { return front_; }
    /// Told after the answer has changed.
    [[nodiscard]] Handle onChanged(std::function<void()> observer) {
        return changed_.subscribe(std::move(observer));
    }

 private:
    void handle(const FocusEvent& event);
    void applicationGone(const QString& bus);
    void connectionChanged();
    void windowChanged();
    void set(std::optional<RunningApplication> application);
    /// Names the application of the window in front.
    QCoro::Task<void> tellApplication(AccessibleRef window, TaskScope scope);
    /// No event has told: asks the windows that were in front before, then all there are.
    QCoro::Task<void> look(TaskScope scope);
    QCoro::Task<bool> lookAmong(std::vector<AccessibleRef> windows, TaskScope scope);
    QCoro::Task<std::vector<AccessibleRef>> allWindows(TaskScope scope);

    AtspiBus& bus_;
    Naming naming_;
    ActiveWindow active_;
    std::optional<RunningApplication> front_;
    /// By bus name, which is never given out again.
    std::map<QString, RunningApplication> named_;
    Signal<> changed_;
    Handle events_;
    Handle goings_;
    Handle connection_;
    TaskHandle telling_;
    TaskHandle looking_;
};

} // namespace lorvane
