// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ParentWatch.h"

#include <sys/prctl.h>
#include <unistd.h>

namespace lorvane::backend {

ParentWatch::ParentWatch(pid_t expected, int wakeSignal) : parent_(expected > 0 ? expected : ::getppid()) {
    ::prctl(PR_SET_PDEATHSIG, wakeSignal);
}

bool ParentWatch::parentGone() const { return ::getppid() != parent_; }

} // namespace lorvane::backend
