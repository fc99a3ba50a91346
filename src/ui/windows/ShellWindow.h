// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <functional>
#include <memory>

namespace lorvane {

enum class WindowKind { home, feedback, firstRun };

/// Whether the program's windows stand in the task bar and the window switcher: an accessory's do not.
enum class ActivationPolicy { accessory, regular };

/// One window of the program on screen. Main thread.
class ShellWindow {
 public:
    virtual ~ShellWindow() = default;
    /// Shows it, in front of all others and with the focus.
    virtual void bringForward() = 0;
    virtual void applyPolicy(ActivationPolicy policy) = 0;
};

/// Makes the windows.
class WindowFactory {
 public:
    virtual ~WindowFactory() = default;
    /// A window that is not shown yet. `closed` is called when the user has closed it, and may destroy it.
    /// Nothing when there is no such window.
    [[nodiscard]] virtual std::unique_ptr<ShellWindow> make(WindowKind kind, const QString& context,
                                                            std::function<void()> closed) = 0;
};

} // namespace lorvane
