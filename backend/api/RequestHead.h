// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/Http.h"

#include <string_view>

namespace lorvane::backend {

class TrustedProxies;

// What a request's head says, as it came.
struct RequestHead {
    std::string_view target;
    std::string_view contentType;
    std::string_view takeId;
    std::string_view platform;
    std::string_view peer;      // address of the connection's other end; empty where nobody asks for it
    std::string_view forwarded; // X-Forwarded-For, its lines joined by commas
};

// What a handler is to know of it; the body and the device are for others to add.
Request requestOf(const RequestHead& head, const TrustedProxies& proxies);

} // namespace lorvane::backend
