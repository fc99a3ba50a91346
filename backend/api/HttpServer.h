// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/ClientAddress.h"
#include "api/Http.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace lorvane::backend {

class WorkPool;

// The destructor of a pool drops what is queued, so that the pools must outlive the server.
struct Pools {
    WorkPool& quick;
    WorkPool& slow;
    WorkPool& takes;
};

struct ServerOptions {
    std::string address = "127.0.0.1";
    std::uint16_t port = 0; // 0: any free one
    int inherited = -1;     // a socket that listens already, taken over; address and port are then its own
    TrustedProxies proxies;
    std::size_t threads = 1;
    std::size_t connections = 4096;
    std::size_t heldBytes = std::size_t(512) << 20; // all request bodies in memory together
    std::size_t backlog = 16 * 1024;                // bytes of lines that wait for one slow client
    std::chrono::milliseconds headerTime = std::chrono::seconds(15);
    std::chrono::milliseconds idleTime = std::chrono::seconds(60);  // between requests of a connection
    std::chrono::milliseconds bodyPause = std::chrono::seconds(20); // longest silence within a body
    std::chrono::milliseconds bodyTime = std::chrono::seconds(240); // longest whole body
    std::chrono::milliseconds writeTime =
        std::chrono::seconds(20); // for the lines that wait, or one whole answer
    std::chrono::milliseconds silence = std::chrono::seconds(15); // of a stream, until a line says it lives
};

// HTTP/1.1 over TCP. Connections live on the server's own threads, handlers run on the pools. A client that
// ends its sending side counts as gone: work for it is stopped at once.
class HttpServer {
 public:
    // Listens from here on, answers after start(). Throws std::runtime_error when it cannot listen. Whatever
    // routes refer to must outlive the server.
    HttpServer(const ServerOptions& options, std::vector<Route> routes, Authentication authentication,
               const Pools& pools, OnServed onServed = {});
    ~HttpServer(); // stop(0)
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    std::uint16_t port() const;
    void start();
    // Serves on, and asks every client from now on to come back on another connection.
    void announceEnd();
    // No new connections; running requests get `grace` to end, then their connections are closed. Blocks.
    // Once.
    void stop(std::chrono::milliseconds grace);
    std::size_t connections() const;

 private:
    class Implementation;
    std::unique_ptr<Implementation> implementation_;
};

} // namespace lorvane::backend
