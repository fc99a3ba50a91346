// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "storage/Storage.h"

#include <chrono>
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
    std::string platform;    // X-Tirra-Platform, likewise, in lower case
    std::string query;       // what follows "?", as sent
    std::string body;
    DeviceId device = 0; // who asks; 0 on routes that take no token
    std::string client;  // where from, on routes that take no token: see TrustedProxies
};

struct Response {
    int status = 200;
    std::string body;
    std::string contentType = "application/json";
    int retryAfter = 0; // seconds after which another try makes sense; 0: not told
};

// Of who is refused because of all the others.
inline constexpr int busyPause = 5;

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
    // The rest of the handling waits for others: another request may take its place among the workers.
    virtual void stepAside() = 0;
    // Goes into the request's log line. Never a token, never a user's words.
    virtual void note(std::string_view text) = 0;
};

using Handler = std::function<void(const Request&, Exchange&)>;
// What can be answered from memory, at once, on the connection's own thread; nothing when the handler is
// wanted.
using Instant = std::function<std::optional<Response>(const Request&)>;

enum class Access { open, token };
// Where the handler runs: quick ones must not wait for anything slower than the store; slow ones wait for
// other servers or read long texts; takes are recognised.
enum class Work { quick, slow, take };

struct Route {
    std::string_view method;
    std::string_view path;
    Access access = Access::token;
    Work work = Work::quick;
    std::size_t bodyLimit = 0; // bytes
    Handler handler;
    Instant instant = {}; // may be none
};

using Authenticator = std::function<std::optional<DeviceId>(std::string_view token)>;

// Whose a bearer token is.
struct Authentication {
    Authenticator lookUp; // nothing for an unknown token; called on the pool for quick answers; may throw
    // From memory, at once, on the connection's thread; nothing: look it up. May be none.
    Authenticator recall = {};
};

// One request has ended: which route (never the client's own words), with what status (0: the client left
// before its answer was whole), after how long. Called on a connection's thread.
using OnServed = std::function<void(std::string_view what, int status, std::chrono::milliseconds took)>;

} // namespace lorvane::backend
