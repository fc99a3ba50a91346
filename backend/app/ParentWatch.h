// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <csignal>
#include <sys/types.h>

namespace lorvane::backend {

// Tells when the process that started this one is gone, however it went. The kernel sends `wakeSignal` then;
// since it does so already when the parent's thread that started us ends, and since the parent may have gone
// before we asked, parentGone() is what decides, after the signal and from time to time.
class ParentWatch {
 public:
    // `expected`: the parent's process id where the parent has told it; 0 takes the one of this moment.
    ParentWatch(pid_t expected, int wakeSignal);
    bool parentGone() const;

 private:
    pid_t parent_;
};

} // namespace lorvane::backend
