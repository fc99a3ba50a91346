// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/CodecKeeper.h"

namespace lorvane {

void CodecKeeper::follow(const Phase& phase) {
    if (isIn<Recording>(phase)) {
        end_.reset();
        loading_.submit([this] { codec_.load(); });
    } else if (isIn<Idle>(phase)) {
        end_ = clock_.after(patience, [this] { codec_.letGo(); });
    }
}

} // namespace lorvane
