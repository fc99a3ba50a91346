// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Handle.h"

#include <functional>

namespace lorvane {

/// Whether fields can be read and keys be posted at all. Main thread, answered from what was last heard.
class Accessibility {
 public:
    virtual ~Accessibility() = default;

    /// The accessibility bus answers, the desktop's accessibility switch is on, synthetic keys are possible.
    [[nodiscard]] virtual bool isTrusted() const = 0;
    /// Tells the user what is missing and how to mend it, and switches on what can be switched on.
    virtual void openAccessibilitySettings() = 0;
    /// Told when the answer of `isTrusted` may have changed.
    [[nodiscard]] virtual Handle subscribe(std::function<void()> changed) = 0;
};

} // namespace lorvane
