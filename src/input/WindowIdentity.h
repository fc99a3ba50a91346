// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>

namespace lorvane {

/// What a compositor tells of a window.
struct WindowIdentity {
    /// By custom the name of the application's desktop entry; empty when it has none.
    QString applicationId;
    /// 0 where the compositor does not tell it.
    std::int64_t processId = 0;

    friend bool operator==(const WindowIdentity&, const WindowIdentity&) = default;
};

} // namespace lorvane
