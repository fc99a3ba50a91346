// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/testing/FakePasteKeys.h"

namespace lorvane {

QCoro::Task<KeysOutcome> FakePasteKeys::post(Aim aim, TaskScope scope) {
    if (delay > Duration::zero()) {
        co_await sleep(clock_, delay, scope);
    }
    if (outcome == KeysOutcome::notPosted) {
        co_return outcome;
    }
    posted.push_back(aim());
    if (onPosted) {
        onPosted();
    }
    while (waitsForEffect && !aim.hasEffect()) {
        co_await sleep(clock_, std::chrono::milliseconds(5), scope);
    }
    co_return outcome;
}

} // namespace lorvane
