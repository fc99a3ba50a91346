// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/RestartPolicy.h"

namespace lorvane {

bool RestartPolicy::allowRestart(Instant now) {
    while (!restarts_.empty() && now - restarts_.front() >= window) {
        restarts_.pop_front();
    }
    if (restarts_.size() >= mostRestarts) {
        return false;
    }
    restarts_.push_back(now);
    return true;
}

} // namespace lorvane
