// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Foundation.h"
#include "core/Presence.h"
#include "ui/windows/WindowRules.h"

namespace lorvane {

/// The program's windows, as far as there are any: the first run has nothing to show yet, so it counts as
/// completed as soon as it is asked for; of another one that is missing the user is told. Main thread.
class ShellWindows final : public Windows {
 public:
    struct Callbacks {
        /// "light", "dark", or any word for what the desktop says.
        std::function<void(const QString&)> applyAppearance;
        std::function<void(const QString& text)> tell;
    };
    ShellWindows(const Foundation& foundation, WindowFactory& factory, Callbacks callbacks)
        : foundation_(foundation), callbacks_(std::move(callbacks)), rules_(factory) {}

    /// Called, some moments after it was asked for, in place of the first run.
    std::function<void()> onFirstRunOver;

    void openHomeWindow() override;
    void presentOnboarding() override;
    void closeOnboarding() override;
    void openFeedback(const QString& context) override;
    void openWhatsNew() override;
    void applyAppearance(const QString& appearance) override { callbacks_.applyAppearance(appearance); }

 private:
    Foundation foundation_;
    Callbacks callbacks_;
    WindowRules rules_;
    Handle firstRun_;
};

} // namespace lorvane
