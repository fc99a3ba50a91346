// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Handle.h"

#include <functional>

namespace lorvane {

/// What the user asked of the whole desktop for the sake of their eyes. Main thread, answered from what was
/// last heard.
class DesktopComfort {
 public:
    virtual ~DesktopComfort() = default;

    [[nodiscard]] virtual bool wantsLessMotion() const = 0;
    [[nodiscard]] virtual bool wantsMoreContrast() const = 0;
    [[nodiscard]] virtual Handle onChange(std::function<void()> observer) = 0;
};

} // namespace lorvane
