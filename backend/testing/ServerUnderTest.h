// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/HttpServer.h"
#include "util/WorkPool.h"

#include <chrono>
#include <functional>
#include <thread>
#include <utility>

namespace lorvane::backend::testing {

// A server over the test's own routes. The only token is "good", of device 7.
class ServerUnderTest {
 public:
    explicit ServerUnderTest(std::vector<Route> routes, const ServerOptions& options = {})
        : server_(options, std::move(routes), {&ServerUnderTest::authenticate}, {quick_, quick_, takes_}) {
        server_.start();
    }
    std::uint16_t port() const { return server_.port(); }
    HttpServer& server() { return server_; }

 private:
    static std::optional<DeviceId> authenticate(std::string_view token) {
        if (token == "broken")
            throw std::runtime_error("no store");
        return token == "good" ? std::optional<DeviceId>(7) : std::nullopt;
    }
    WorkPool quick_{2, 1000};
    WorkPool takes_{2, 2};
    HttpServer server_;
};

// Looks at the condition until it holds or the time is over.
inline bool eventually(const std::function<bool()>& condition,
                       std::chrono::milliseconds bound = std::chrono::seconds(20)) {
    const auto latest = std::chrono::steady_clock::now() + bound;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > latest)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

// Resident memory of this process in bytes.
std::size_t residentBytes();

} // namespace lorvane::backend::testing
