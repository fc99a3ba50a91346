// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Handle.h"

#include <QString>

#include <functional>
#include <optional>

namespace lorvane {

/// Newer versions of the program. Main thread.
class Updates {
 public:
    virtual ~Updates() = default;
    /// The version that waits, as the user reads it; nothing when none is known of.
    [[nodiscard]] virtual std::optional<QString> available() const = 0;
    [[nodiscard]] virtual Handle subscribeAvailable(std::function<void()> changed) = 0;
    /// On the wish of the user, who is told how it went.
    virtual void checkForUpdates() = 0;
};

} // namespace lorvane
