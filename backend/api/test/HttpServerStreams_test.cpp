// SPDX-License-Identifier: GPL-3.0-or-later
// Clients that read slowly, not at all, or leave, while an answer goes out.
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

TEST(HttpServerStreams, AClientThatDoesNotReadHoldsUpTheWorkAndIsCut) {
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

TEST(HttpServerStreams, AClientThatReadsSlowlyGetsEverything) {
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

TEST(HttpServerStreams, AnAnswerLargerThanTheSocketTakesComesWhole) {
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

TEST(HttpServerStreams, ALineIsThereBeforeTheNextIsMade) {
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
TEST(HttpServerStreams, WorkIsStoppedWithinTenMillisecondsOfADisconnect) {
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

TEST(HttpServerStreams, AStreamIsSilentForFifteenSecondsAndAWriteTakesTwentyAtMost) {
    EXPECT_EQ(ServerOptions().silence, 15s);
    EXPECT_EQ(ServerOptions().writeTime, 20s);
}

TEST(HttpServerStreams, ASilentStreamSaysThatItLives) {
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
TEST(HttpServerStreams, ThereIsNoPingBeforeAStreamNorInAnAnswer) {
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

TEST(HttpServerStreams, AStreamOfPingsAloneEndsWithItsClient) {
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
