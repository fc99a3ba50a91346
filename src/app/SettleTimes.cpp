// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SettleTimes.h"

#include "platform/linux/atspi/ProgramKind.h"

namespace lorvane {

namespace {

constexpr std::size_t mostProcesses = 256;

Duration settleTimeOf(ProgramKind kind) {
    switch (kind) {
    case ProgramKind::qt:
        return Duration::zero(); // reads its map in the order of its events
    case ProgramKind::chromium:
        return std::chrono::milliseconds(10); // hands the map on to another of its threads
    case ProgramKind::unknown:
        break;
    }
    return std::chrono::milliseconds(5);
}

} // namespace

Duration SettleTimes::of(const RunningApplication& application) {
    if (const auto found = known_.find(application.processId); found != known_.end()) {
        return found->second;
    }
    if (known_.size() >= mostProcesses) {
        known_.clear();
    }
    const Duration time = settleTimeOf(programKind(application.processId));
    known_.emplace(application.processId, time);
    return time;
}

} // namespace lorvane
