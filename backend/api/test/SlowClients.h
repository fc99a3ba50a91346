// SPDX-License-Identifier: GPL-3.0-or-later
// What the suites of clients that are slow, or too many, have in common.
#pragma once

#include "testing/Connection.h"
#include "testing/ServerUnderTest.h"

#include <chrono>
#include <string>

namespace lorvane::backend::testing {

using Clock = std::chrono::steady_clock;

/// A way by GET that anybody may take and that counts as work on a take.
inline Route route(std::string_view path, Handler handler) {
    return {"GET", path, Access::open, Work::take, 1 << 20, std::move(handler)};
}

inline std::string get(const std::string& path) { return requestText({"GET", path, "", "", "", "", ""}); }

inline double milliseconds(Clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

} // namespace lorvane::backend::testing
