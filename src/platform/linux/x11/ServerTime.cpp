// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/ServerTime.h"

#include <algorithm>

namespace lorvane {

void ServerTime::observe(std::uint32_t serverTime, Instant now) { (void)at(serverTime, now); }

Instant ServerTime::at(std::uint32_t serverTime, Instant now) {
    // The pair moves along, so that no difference ever spans half the range of the server's times.
    const Instant mapped = nearest_ ? std::min(map(serverTime), now) : now;
    nearest_ = Pair{serverTime, mapped};
    return mapped;
}

Instant ServerTime::map(std::uint32_t serverTime) const {
    const auto difference = static_cast<std::int32_t>(serverTime - nearest_->server);
    return nearest_->local + std::chrono::milliseconds(difference);
}

} // namespace lorvane
