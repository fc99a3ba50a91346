// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "input/Workspace.h"

#include <map>

namespace lorvane {

/// How long each application needs to know keys by new symbols, found out once for each process. Main thread.
class SettleTimes {
 public:
    [[nodiscard]] Duration of(const RunningApplication& application);

 private:
    std::map<ProcessId, Duration> known_;
};

} // namespace lorvane
