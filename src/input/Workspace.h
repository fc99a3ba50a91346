// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>
#include <optional>

namespace lorvane {

using ProcessId = std::int64_t;

struct RunningApplication {
    ProcessId processId = 0;
    /// As the user knows it; empty when nothing is known.
    QString localizedName;
    /// Stable across runs (the desktop entry's name, else the window class); empty when nothing is known.
    QString bundleIdentifier;

    friend bool operator==(const RunningApplication&, const RunningApplication&) = default;
};

/// The application in front. Main thread, answered from what was last heard: never waits.
class Workspace {
 public:
    virtual ~Workspace() = default;
    [[nodiscard]] virtual std::optional<RunningApplication> frontmostApplication() const = 0;
};

} // namespace lorvane
