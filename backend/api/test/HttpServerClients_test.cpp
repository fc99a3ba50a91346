// SPDX-License-Identifier: GPL-3.0-or-later
// Clients that are slow, gone, or too many.
#include "testing/Connection.h"
#include "testing/ServerUnderTest.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <gtest/gtest.h>
#include <latch>
#include <mutex>

using namespace lorvane::backend;
using namespace lorvane::backend::testing;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

Route route(std::string_view path, Handler handler) {
    return {"GET", path, Access::open, Work::take, 1 << 20, std::move(handler)};
}

std::string get(const std::string& path) { return requestText({"GET", path, "", "", "", "", ""}); }

double milliseconds(Clock::duration time) { return std::chrono::duration<double, std::milli>(time).count(); }

} // namespace

TEST(HttpServerClients, AClientThatDoesNotReadHoldsUpTheWorkAndIsCut) {
    std::atomic<std::size_t> written = 0;
    std::atomic<bool> ended = false;
    ServerOptions options;
    options.writeTime = 1s;
    ServerUnderTest server({route("/flood",
                                  [&](const Request&, Exchange& exchange) {
                                      exchange.startLines();
                                      const std::string line(10'000, 'x');
                                      while (written < (std::size_t(1) << 30) && exchange.writeLine(line))
                                          written += line.size();
                                      ended = true;
                                  })},
                           options);
    const auto before = residentBytes();
    Connection connection(server.port(), 4096);
    const auto began = Clock::now();
    connection.send(get("/flood"));
    EXPECT_TRUE(eventually([&] { return ended.load(); }));
    const auto took = milliseconds(Clock::now() - began);
    const auto grown = residentBytes() > before ? residentBytes() - before : 0;
    EXPECT_GE(took, 900);
    EXPECT_LT(took, 5000);
    EXPECT_LT(written, std::size_t(32) << 20) << "the socket's buffers and no more";
    EXPECT_LT(grown, std::size_t(32) << 20) << "of the gigabyte that it would send";
    EXPECT_TRUE(eventually([&] { return server.server().connections() == 0; }));
    std::printf("cut after %.0f ms with %zu KiB written, memory grew by %zu KiB\n", took, written / 1024,
                grown / 1024);
}

TEST(HttpServerClients, AClientThatReadsSlowlyGetsEverything) {
    constexpr int lines = 2000;
    std::atomic<int> written = 0;
    ServerUnderTest server({route("/much", [&](const Request&, Exchange& exchange) {
        exchange.startLines();
        for (int i = 0; i < lines; ++i, ++written)
            exchange.writeLine(std::to_string(i) + std::string(5000, ' '));
    })});
    Connection connection(server.port(), 4096);
    connection.send(get("/much"));
    EXPECT_EQ(connection.readHead().status, 200);
    int ahead = 0;
    for (int i = 0; i < lines; ++i) {
        const auto line = connection.readLine();
        ASSERT_TRUE(line) << i;
        ASSERT_EQ(std::stoi(*line), i);
        // Every now and then this side reads nothing until the other has nowhere to write to any more.
        int seen = -1;
        if (i % 200 == 0)
            eventually([&] { return written == lines || std::exchange(seen, written.load()) == written; });
        ahead = std::max(ahead, written - i);
    }
    EXPECT_LT(ahead, lines) << "it was never held up";
    EXPECT_FALSE(connection.readLine());
    EXPECT_TRUE(connection.bodyEnded());
}

TEST(HttpServerClients, AnAnswerLargerThanTheSocketTakesComesWhole) {
    const std::string large(std::size_t(16) << 20, 'x');
    ServerUnderTest server({route("/large", [&](const Request&, Exchange& exchange) {
        exchange.respond({200, large});
    })});
    Connection connection(server.port(), 4096);
    for (int i = 0; i < 2; ++i) { // the connection is as good as before
        connection.send(get("/large"));
        const auto reply = connection.readReply();
        EXPECT_EQ(reply.status, 200);
        EXPECT_TRUE(reply.body == large);
    }
}

TEST(HttpServerClients, ALineIsThereBeforeTheNextIsMade) {
    std::latch read(1);
    ServerUnderTest server({route("/two", [&](const Request&, Exchange& exchange) {
        exchange.startLines();
        exchange.writeLine("first");
        read.wait();
        exchange.writeLine("second");
    })});
    Connection connection(server.port());
    connection.send(get("/two"));
    connection.readHead();
    EXPECT_EQ(connection.readLine(), "first");
    read.count_down();
    EXPECT_EQ(connection.readLine(), "second");
}

class Disconnect : public ::testing::TestWithParam<std::tuple<bool, std::string>> {};

// The handler writes nothing meanwhile, so that only the connection itself can tell.
TEST_P(Disconnect, StopsTheWork) {
    const auto& [hard, ahead] = GetParam();
    std::atomic<bool> started = false;
    std::atomic<bool> stopped = false;
    std::atomic<Clock::time_point> at{};
    ServerUnderTest server({route("/work", [&](const Request&, Exchange& exchange) {
        std::stop_callback note(exchange.stopToken(), [&] {
            at = Clock::now();
            stopped = true;
        });
        started = true;
        std::mutex nothing;
        std::unique_lock lock(nothing);
        std::condition_variable_any never;
        never.wait(lock, exchange.stopToken(), [] { return false; });
    })});
    Connection connection(server.port());
    connection.send(get("/work") + ahead);
    ASSERT_TRUE(eventually([&] { return started.load(); }));
    const auto left = Clock::now();
    hard ? connection.reset() : connection.close();
    ASSERT_TRUE(eventually([&] { return stopped.load(); }));
    std::printf("stopped %.2f ms after the client left\n", milliseconds(at.load() - left));
    EXPECT_TRUE(eventually([&] { return server.server().connections() == 0; }));
}

INSTANTIATE_TEST_SUITE_P(Kinds, Disconnect,
                         ::testing::Values(std::tuple(false, ""), std::tuple(true, ""),
                                           std::tuple(false, "GET /another HTTP/1.1\r\n\r\n")));

// One look may fall together with whatever else the machine does; the middle of many does not.
TEST(HttpServerClients, WorkIsStoppedWithinTenMillisecondsOfADisconnect) {
    constexpr int rounds = 101;
    std::atomic<bool> started = false;
    std::atomic<Clock::rep> stoppedAt = 0;
    ServerUnderTest server({route("/work", [&](const Request&, Exchange& exchange) {
        std::stop_callback note(exchange.stopToken(),
                                [&] { stoppedAt = Clock::now().time_since_epoch().count(); });
        exchange.startLines();
        exchange.writeLine("begun");
        started = true;
        std::mutex nothing;
        std::unique_lock lock(nothing);
        std::condition_variable_any never;
        never.wait(lock, exchange.stopToken(), [] { return false; });
    })});
    std::vector<double> took;
    for (int i = 0; i < rounds; ++i) {
        started = false;
        stoppedAt = 0;
        Connection connection(server.port());
        connection.send(get("/work"));
        ASSERT_TRUE(eventually([&] { return started.load(); }));
        const auto left = Clock::now();
        i % 2 ? connection.reset() : connection.close();
        ASSERT_TRUE(eventually([&] { return stoppedAt.load() != 0; }));
        took.push_back(milliseconds(Clock::time_point(Clock::duration(stoppedAt.load())) - left));
    }
    std::sort(took.begin(), took.end());
    std::printf("stopped after %.2f ms (median), %.2f ms (99 of 100), %.2f ms at most\n", took[rounds / 2],
                took[99], took.back());
    EXPECT_LT(took[rounds / 2], 10.0);
}

TEST(HttpServerClients, AStreamIsSilentForFifteenSecondsAndAWriteTakesTwentyAtMost) {
    EXPECT_EQ(ServerOptions().silence, 15s);
    EXPECT_EQ(ServerOptions().writeTime, 20s);
}

TEST(HttpServerClients, ASilentStreamSaysThatItLives) {
    std::atomic<int> step = 0;
    ServerOptions options;
    options.silence = 150ms;
    ServerUnderTest server({route("/slow",
                                  [&](const Request&, Exchange& exchange) {
                                      exchange.startLines();
                                      exchange.writeLine("first");
                                      eventually([&] { return step == 1; });
                                      exchange.writeLine("second");
                                  })},
                           options);
    Connection connection(server.port());
    connection.send(get("/slow"));
    ASSERT_EQ(connection.readHead().status, 200);
    EXPECT_EQ(connection.readLine(), "first");
    const auto began = Clock::now();
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(connection.readLine(), R"({"type":"ping"})");
    EXPECT_GE(milliseconds(Clock::now() - began), 440);
    step = 1;
    auto line = connection.readLine();
    while (line == R"({"type":"ping"})")
        line = connection.readLine();
    EXPECT_EQ(line, "second");
    EXPECT_FALSE(connection.readLine());
    EXPECT_TRUE(connection.bodyEnded());
}

// A ping would be in the way of the status, and of an answer that has a length.
TEST(HttpServerClients, ThereIsNoPingBeforeAStreamNorInAnAnswer) {
    ServerOptions options;
    options.silence = 50ms;
    std::latch release(1);
    ServerUnderTest server({route("/late",
                                  [&](const Request&, Exchange& exchange) {
                                      release.wait();
                                      exchange.respond({422, "late"});
                                  })},
                           options);
    Connection connection(server.port());
    connection.send(get("/late"));
    EXPECT_FALSE(connection.readableWithin(4 * options.silence)) << "nothing before the status";
    release.count_down();
    const auto reply = connection.readReply();
    EXPECT_EQ(reply.status, 422);
    EXPECT_EQ(reply.body, "late");
}

TEST(HttpServerClients, AStreamOfPingsAloneEndsWithItsClient) {
    std::atomic<bool> stopped = false;
    ServerOptions options;
    options.silence = 5ms;
    ServerUnderTest server({route("/pings",
                                  [&](const Request&, Exchange& exchange) {
                                      exchange.startLines();
                                      eventually([&] { return exchange.stopToken().stop_requested(); });
                                      stopped = true;
                                  })},
                           options);
    Connection connection(server.port());
    connection.send(get("/pings"));
    ASSERT_EQ(connection.readHead().status, 200);
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(connection.readLine(), R"({"type":"ping"})");
    connection.close();
    EXPECT_TRUE(eventually([&] { return stopped.load(); }));
    EXPECT_TRUE(eventually([&] { return server.server().connections() == 0; }));
}

TEST(HttpServerClients, AHeaderThatNeverEndsIsCut) {
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

TEST(HttpServerClients, AConnectionWithoutAnotherRequestIsClosed) {
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

TEST(HttpServerClients, ABodyThatStopsComingIsCut) {
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

TEST(HttpServerClients, AFullQueueIsBusyAndRecovers) {
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

TEST(HttpServerClients, BodiesBeyondTheSharedMemoryAreBusy) {
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

TEST(HttpServerClients, ConnectionsBeyondTheBoundAreClosed) {
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

TEST(HttpServerClients, AStopLetsRunningRequestsEndAndClosesIdleConnections) {
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

TEST(HttpServerClients, AStopWithoutGraceStopsTheWork) {
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

TEST(HttpServerClients, AfterTheAnnouncementEveryAnswerEndsItsConnection) {
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
TEST(HttpServerClients, WhoCameBeforeTheStopIsAnswered) {
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

TEST(HttpServerClients, WhatIsKnownFromMemoryIsAnsweredWhileEveryWorkerIsBusy) {
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
