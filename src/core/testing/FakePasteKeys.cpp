// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/testing/FakePasteKeys.h"

namespace lorvane {

QCoro::Task<bool> FakePasteKeys::post(PasteRoute route, TaskScope scope) {
    if (delay > Duration::zero()) {
        co_await sleep(clock_, delay, scope);
    }
    if (fails) {
        co_return false;
    }
    posted.push_back(route);
    if (onPosted) {
        onPosted();
    }
    co_return true;
}

} // namespace lorvane
