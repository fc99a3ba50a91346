// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "storage/Storage.h"

#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace lorvane::backend {

// What a handler sees of HTTP. Nothing here knows the library that speaks it.

struct Request {
    std::string contentType; // as sent, in lower case, without parameters
    std::string takeId;      // X-Tirra-Take, empty when absent or unusable
    std::string body;
    DeviceId device = 0; // who asks; 0 on routes that take no token
};

struct Response {
    int status = 200;
    std::string body;
};

// The answering side of one request. A handler either respond()s once, or startLines() and then writes lines
// until it returns. Used by the handler's thread only, until the handler returns.
class Exchange {
 public:
    virtual ~Exchange() = default;
    virtual void respond(Response response) = 0;
    // 200 and a body of lines, each sent when it is written.
    virtual void startLines() = 0;
    // Adds the line end. Blocks while the client is too far behind; false when the client is gone.
    virtual bool writeLine(std::string line) = 0;
    // Asked to stop when the client is gone or the server ends.
    virtual std::stop_token stopToken() const = 0;
    // Goes into the request's log line. Never a token, never a user's words.
    virtual void note(std::string_view text) = 0;
};

using Handler = std::function<void(const Request&, Exchange&)>;

struct Route {
    std::string_view method;
    std::string_view path;
    bool needsToken = true;
    bool heavy = false;        // runs on the pool for recognition, not on the one for quick answers
    std::size_t bodyLimit = 0; // bytes
    Handler handler;
};

// The device of a bearer token, nothing for an unknown one. Called on the pool for quick answers; may throw.
using Authenticator = std::function<std::optional<DeviceId>(std::string_view token)>;

} // namespace lorvane::backend
