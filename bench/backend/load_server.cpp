// SPDX-License-Identifier: GPL-3.0-or-later
// The backend's server with handlers that measure it: load_server PORT THREADS. Ends with its standard input.
#include "api/HttpServer.h"
#include "util/WorkPool.h"

#include <cstdio>
#include <cstdlib>
#include <thread>
#include <unistd.h>

using namespace lorvane::backend;

namespace {

// As an engine does that has something to say every 20 ms, for a second.
void stream(const Request&, Exchange& exchange) {
    constexpr int lines = 50;
    constexpr auto pause = std::chrono::milliseconds(20);
    auto next = std::chrono::steady_clock::now();
    exchange.startLines();
    for (int i = 0; i < lines; ++i) {
        next += pause;
        std::this_thread::sleep_until(next);
        if (!exchange.writeLine(R"({"type":"delta","text":" another few words"})"))
            return;
    }
}

void flood(const Request&, Exchange& exchange) {
    const std::string line(10'000, 'x');
    exchange.startLines();
    while (exchange.writeLine(line)) {
    }
}

void plain(const Request&, Exchange& exchange) { exchange.respond({200, R"({"code":"23456789"})"}); }

} // namespace

int main(int argc, char** argv) {
    if (argc != 3)
        return 2;
    const auto threads = std::strtoul(argv[2], nullptr, 10);
    WorkPool quick(2, 4096);
    WorkPool takes(threads, threads);
    ServerOptions options;
    options.port = static_cast<std::uint16_t>(std::strtoul(argv[1], nullptr, 10));
    options.connections = 20'000;
    const auto device = [](std::string_view token) {
        return token == "good" ? std::optional<DeviceId>(7) : std::nullopt;
    };
    HttpServer server(options,
                      {{"GET", "/stream", Access::token, Work::take, 0, &stream},
                       {"GET", "/flood", Access::token, Work::take, 0, &flood},
                       {"GET", "/plain", Access::token, Work::quick, 0, &plain}},
                      {device, device}, {quick, quick, takes});
    server.start();
    std::printf("listening\n");
    std::fflush(stdout);
    char byte = 0;
    while (::read(STDIN_FILENO, &byte, 1) > 0) {
    }
    server.stop(std::chrono::milliseconds(0));
}
