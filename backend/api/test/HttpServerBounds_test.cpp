// SPDX-License-Identifier: GPL-3.0-or-later
// Clients that are too slow with a request, or too many, and the end of a server.
#include "SlowClients.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <gtest/gtest.h>
#include <latch>
#include <mutex>

using namespace lorvane::backend;
using namespace lorvane::backend::testing;
using namespace std::chrono_literals;

TEST(HttpServerBounds, AHeaderThatNeverEndsIsCut) {
    ServerOptions options;
    options.headerTime = 300ms;
    ServerUnderTest server({route("/get",
                                  [](const Request&, Exchange& exchange) {
                                      exchange.respond({200, ""});
                                  })},
                           options);
    Connection connection(server.port());
    const auto began = Clock::now();
    // A byte now and then does not prolong it.
    while (milliseconds(Clock::now() - began) < 5000 && connection.send("G")) {
        if (connection.closedWithin(50ms))
            break;
    }
    EXPECT_LT(milliseconds(Clock::now() - began), 3000);
}

TEST(HttpServerBounds, AConnectionWithoutAnotherRequestIsClosed) {
    ServerOptions options;
    options.idleTime = 300ms;
    ServerUnderTest server({route("/get",
                                  [](const Request&, Exchange& exchange) {
                                      exchange.respond({200, ""});
                                  })},
                           options);
    Connection connection(server.port());
    connection.send(get("/get"));
    EXPECT_EQ(connection.readReply().status, 200);
    const auto answered = Clock::now();
    EXPECT_TRUE(connection.closedWithin(10s));
    EXPECT_GE(milliseconds(Clock::now() - answered), 250);
}

TEST(HttpServerBounds, ABodyThatStopsComingIsCut) {
    ServerOptions options;
    options.bodyPause = 300ms;
    ServerUnderTest server({route("/get",
                                  [](const Request&, Exchange& exchange) {
                                      exchange.respond({200, ""});
                                  })},
                           options);
    Connection connection(server.port());
    connection.send("GET /get HTTP/1.1\r\nContent-Length: 100\r\n\r\nhalf");
    EXPECT_TRUE(connection.closedWithin(10s));
}

TEST(HttpServerBounds, AFullQueueIsBusyAndRecovers) {
    std::atomic<int> running = 0;
    std::latch release(1);
    ServerUnderTest server({route("/work", [&](const Request&, Exchange& exchange) {
        ++running;
        release.wait();
        exchange.respond({200, "{}"});
    })});
    std::vector<Connection> clients;
    for (int i = 0; i < 2; ++i) {
        clients.emplace_back(server.port());
        clients.back().send(get("/work"));
    }
    ASSERT_TRUE(eventually([&] { return running == 2; }));
    int busy = 0;
    for (int i = 0; i < 6; ++i) {
        clients.emplace_back(server.port());
        clients.back().send(get("/work"));
    }
    // Two wait in the queue; the four that cannot are answered at once.
    for (std::size_t i = 2; i < clients.size(); ++i) {
        clients[i].setPatience(1s);
        busy += clients[i].readReply().status == 503 ? 1 : 0;
    }
    EXPECT_EQ(busy, 4);
    release.count_down();
    EXPECT_EQ(clients[0].readReply().status, 200);
    EXPECT_EQ(request(server.port(), {"GET", "/work", "", "", "", "", ""}).status, 200);
}

TEST(HttpServerBounds, BodiesBeyondTheSharedMemoryAreBusy) {
    ServerOptions options;
    options.heldBytes = 100'000;
    std::latch release(1);
    std::atomic<int> running = 0;
    Handler wait = [&](const Request&, Exchange& exchange) {
        ++running;
        release.wait();
        exchange.respond({200, "{}"});
    };
    ServerUnderTest server({{"POST", "/take", Access::open, Work::take, 1 << 20, wait}}, options);
    const Call call{"POST", "/take", "", "a/b", "", "", std::string(60'000, 'x')};
    Connection first(server.port());
    first.send(requestText(call));
    ASSERT_TRUE(eventually([&] { return running == 1; }));
    EXPECT_EQ(request(server.port(), call).status, 503);
    release.count_down();
    EXPECT_EQ(first.readReply().status, 200);
    // The answer may be there a moment before the memory is free.
    EXPECT_TRUE(eventually([&] { return request(server.port(), call).status == 200; }));
}

TEST(HttpServerBounds, ConnectionsBeyondTheBoundAreClosed) {
    ServerOptions options;
    options.connections = 3;
    ServerUnderTest server({route("/get",
                                  [](const Request&, Exchange& exchange) {
                                      exchange.respond({200, ""});
                                  })},
                           options);
    std::vector<Connection> clients;
    for (int i = 0; i < 3; ++i) {
        clients.emplace_back(server.port());
        EXPECT_EQ(request(clients.back(), {"GET", "/get", "", "", "", "", ""}).status, 200);
    }
    Connection fourth(server.port());
    EXPECT_TRUE(fourth.closedWithin(10s));
    clients.clear();
    EXPECT_TRUE(eventually([&] { return server.server().connections() == 0; }));
    EXPECT_EQ(request(server.port(), {"GET", "/get", "", "", "", "", ""}).status, 200);
}

TEST(HttpServerBounds, AStopLetsRunningRequestsEndAndClosesIdleConnections) {
    std::atomic<bool> started = false;
    std::latch release(1);
    ServerUnderTest server({route("/work", [&](const Request&, Exchange& exchange) {
        exchange.startLines();
        exchange.writeLine("first");
        started = true;
        release.wait();
        exchange.writeLine("last");
    })});
    Connection idle(server.port());
    Connection busy(server.port());
    busy.send(get("/work"));
    ASSERT_TRUE(eventually([&] { return started.load(); }));
    std::thread stopping([&] { server.server().stop(30s); });
    EXPECT_TRUE(idle.closedWithin(10s));
    release.count_down();
    EXPECT_EQ(busy.readReply().body, "first\nlast\n");
    stopping.join();
    EXPECT_THROW(Connection(server.port()), std::runtime_error);
}

TEST(HttpServerBounds, AStopWithoutGraceStopsTheWork) {
    std::atomic<bool> started = false;
    ServerUnderTest server({route("/work", [&](const Request&, Exchange& exchange) {
        started = true;
        std::mutex nothing;
        std::unique_lock lock(nothing);
        std::condition_variable_any never;
        never.wait(lock, exchange.stopToken(), [] { return false; });
    })});
    Connection connection(server.port());
    connection.send(get("/work"));
    ASSERT_TRUE(eventually([&] { return started.load(); }));
    const auto began = Clock::now();
    server.server().stop(0ms);
    EXPECT_LT(milliseconds(Clock::now() - began), 2000);
    EXPECT_TRUE(connection.closedWithin(10s));
}

TEST(HttpServerBounds, AfterTheAnnouncementEveryAnswerEndsItsConnection) {
    std::latch release(1);
    std::atomic<bool> started = false;
    ServerUnderTest server({route("/plain",
                                  [](const Request&, Exchange& exchange) {
                                      exchange.respond({200, "{}"});
                                  }),
                            route("/stream", [&](const Request&, Exchange& exchange) {
                                started = true;
                                release.wait();
                                exchange.startLines();
                                exchange.writeLine("line");
                            })});
    Connection kept(server.port());
    kept.send(get("/plain"));
    EXPECT_EQ(kept.readReply().headers.count("connection"), 0U);
    Connection stream(server.port());
    stream.send(get("/stream"));
    ASSERT_TRUE(eventually([&] { return started.load(); }));
    server.server().announceEnd();
    release.count_down();
    const auto streamed = stream.readReply();
    EXPECT_EQ(streamed.body, "line\n");
    EXPECT_EQ(streamed.headers.at("connection"), "close");
    EXPECT_TRUE(stream.closedWithin(10s));
    kept.send(get("/plain"));
    EXPECT_EQ(kept.readReply().headers.at("connection"), "close");
    EXPECT_TRUE(kept.closedWithin(10s));
    EXPECT_EQ(request(server.port(), {"GET", "/plain", "", "", "", "", ""}).status, 200) << "still served";
}

// Connected and sent before the stop, and not accepted by then or not read: nobody of them is lost.
TEST(HttpServerBounds, WhoCameBeforeTheStopIsAnswered) {
    for (int round = 0; round < 20; ++round) {
        auto plain = route("/plain", [](const Request&, Exchange& exchange) {
            exchange.respond({200, "{}"});
        });
        plain.work = Work::quick;
        ServerUnderTest server({plain});
        std::vector<Connection> clients;
        for (int i = 0; i < 20; ++i) {
            clients.emplace_back(server.port());
            clients.back().send(get("/plain"));
        }
        server.server().stop(30s);
        for (auto& client : clients)
            ASSERT_EQ(client.readReply().status, 200);
    }
}

TEST(HttpServerBounds, WhatIsKnownFromMemoryIsAnsweredWhileEveryWorkerIsBusy) {
    std::latch release(1);
    std::atomic<int> busy = 0;
    const Handler wait = [&](const Request&, Exchange& exchange) {
        ++busy;
        release.wait();
        exchange.respond({200, "worker"});
    };
    auto quick = route("/quick", wait);
    quick.work = Work::quick;
    quick.instant = [](const Request& request) {
        return request.query == "known" ? std::optional(Response{200, "memory"}) : std::nullopt;
    };
    ServerUnderTest server({quick});
    std::vector<Connection> clients;
    for (int i = 0; i < 2; ++i) {
        clients.emplace_back(server.port());
        clients.back().send(get("/quick?other"));
    }
    ASSERT_TRUE(eventually([&] { return busy == 2; }));
    EXPECT_EQ(request(server.port(), {"GET", "/quick?known", "", "", "", "", ""}).body, "memory");
    release.count_down();
    for (auto& client : clients)
        EXPECT_EQ(client.readReply().body, "worker");
}
