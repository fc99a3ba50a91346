// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "input/Workspace.h"

namespace lorvane {

/// The application in front is whatever the test says.
class FakeWorkspace final : public Workspace {
 public:
    [[nodiscard]] std::optional<RunningApplication> frontmostApplication() const override { return front; }

    std::optional<RunningApplication> front;
};

} // namespace lorvane
