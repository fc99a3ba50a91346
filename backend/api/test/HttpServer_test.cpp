// SPDX-License-Identifier: GPL-3.0-or-later
#include "testing/Connection.h"
#include "testing/ServerUnderTest.h"

#include <atomic>
#include <gtest/gtest.h>

using namespace lorvane::backend;
using namespace lorvane::backend::testing;
using namespace std::chrono_literals;

namespace {

constexpr std::size_t limit = 1 << 20;

void echo(const Request& request, Exchange& exchange) {
    exchange.respond({200, std::to_string(request.device) + '|' + request.contentType + '|' + request.takeId +
                               '|' + std::to_string(request.body.size())});
}

void threeLines(const Request&, Exchange& exchange) {
    exchange.startLines();
    for (const char* line : {"one", "two", "three"})
        exchange.writeLine(line);
}

std::vector<Route> routes() {
    return {{"POST", "/echo", Access::token, Work::take, limit, &echo},
            {"POST", "/open", Access::open, Work::quick, limit, &echo},
            {"GET", "/get", Access::open, Work::quick, 0, &echo},
            {"GET", "/lines", Access::open, Work::take, 0, &threeLines},
            {"GET", "/at-once", Access::open, Work::quick, 0, &echo,
             [](const Request&) {
                 return std::optional(Response{200, "at once"});
             }},
            {"GET", "/throws", Access::open, Work::take, 0,
             [](const Request&, Exchange&) { throw std::runtime_error("on purpose"); }},
            {"GET", "/throws-late", Access::open, Work::take, 0, [](const Request&, Exchange& exchange) {
                 exchange.startLines();
                 exchange.writeLine("one");
                 throw std::runtime_error("on purpose");
             }}};
}

} // namespace

class HttpServerTest : public ::testing::Test {
 protected:
    ServerUnderTest server_{routes()};
    std::uint16_t port_ = server_.port();
};

TEST_F(HttpServerTest, AHandlerSeesTheRequest) {
    Call call{"POST", "/echo", "good", "Text/Plain; charset=x", "take-1", "", std::string(1000, 'x')};
    const auto reply = request(port_, call);
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body, "7|text/plain|take-1|1000");
}

TEST_F(HttpServerTest, AConnectionServesManyRequests) {
    Connection connection(port_);
    for (int i = 0; i < 100; ++i) {
        Call call{"POST", "/echo", "good", "a/b", "", "", std::string(static_cast<std::size_t>(i), 'x')};
        ASSERT_EQ(request(connection, call).body, "7|a/b||" + std::to_string(i));
    }
}

TEST_F(HttpServerTest, RequestsSentAheadAreAnsweredInOrder) {
    Connection connection(port_);
    std::string all;
    for (int i = 0; i < 5; ++i)
        all += requestText(
            {"POST", "/echo", "good", "a/b", "", "", std::string(static_cast<std::size_t>(i), 'x')});
    connection.send(all + requestText({"GET", "/lines", "", "", "", "", ""}));
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(connection.readReply().body, "7|a/b||" + std::to_string(i));
    EXPECT_EQ(connection.readReply().body, "one\ntwo\nthree\n");
}

TEST_F(HttpServerTest, UnknownPathsMethodsAndTokensAreRefused) {
    EXPECT_EQ(request(port_, {"GET", "/nothing", "", "", "", "", ""}).status, 404);
    EXPECT_EQ(request(port_, {"GET", "/", "", "", "", "", ""}).status, 404);
    EXPECT_EQ(request(port_, {"GET", "/../../etc/passwd", "", "", "", "", ""}).status, 404);
    const auto other = request(port_, {"GET", "/echo", "good", "", "", "", ""});
    EXPECT_EQ(other.status, 405);
    EXPECT_EQ(other.headers.at("allow"), "POST");
    EXPECT_EQ(request(port_, {"POST", "/get", "", "a/b", "", "", ""}).headers.at("allow"), "GET, HEAD");
    EXPECT_EQ(request(port_, {"POST", "/echo", "", "a/b", "", "", "x"}).status, 401);
    EXPECT_EQ(request(port_, {"POST", "/echo", "bad", "a/b", "", "", "x"}).status, 401);
    EXPECT_EQ(request(port_, {"POST", "/echo", "broken", "a/b", "", "", "x"}).status, 503);
}

// By the raw bytes: a client that reads as it should would not see a body that should not be there.
TEST_F(HttpServerTest, AnAnswerToHeadIsTheHeadOfTheOtherAnswerAndNeverHasABody) {
    const std::string close = " HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n";
    const auto answerTo = [&](const std::string& request) {
        Connection connection(port_);
        connection.send(request + close);
        return connection.readAll();
    };
    for (const std::string path : {"/get", "/get?r=1", "/at-once", "/throws", "/nothing"}) {
        const auto whole = answerTo("GET " + path);
        const auto head = answerTo("HEAD " + path);
        EXPECT_EQ(head, whole.substr(0, whole.find("\r\n\r\n") + 4)) << path;
        EXPECT_NE(whole, head) << path;
    }
    for (const std::string request :
         {"HEAD /echo", "HEAD /open", "HEAD /lines", "HEAD /get HTTP/1.1\r\nContent-Length: -1\r\nX: "}) {
        const auto head = answerTo(request);
        EXPECT_TRUE(head.starts_with("HTTP/1.1 ") && head.ends_with("\r\n\r\n")) << head;
        EXPECT_EQ(head.find("\r\n\r\n"), head.size() - 4) << head;
    }
    EXPECT_NE(answerTo("HEAD /echo").find("405 Method Not Allowed\r\n"), std::string::npos);
    EXPECT_NE(answerTo("HEAD /echo").find("\r\nAllow: POST\r\n"), std::string::npos);
}

TEST_F(HttpServerTest, AConnectionServesOnAfterAHead) {
    Connection connection(port_);
    for (const char* path : {"/get", "/at-once", "/lines", "/echo"}) {
        connection.send("HEAD " + std::string(path) + " HTTP/1.1\r\nHost: x\r\n\r\n");
        EXPECT_NE(connection.readHead().status, 0) << path;
        EXPECT_EQ(request(connection, {"GET", "/get", "", "", "", "", ""}).body, "0|||0") << path;
    }
}

TEST_F(HttpServerTest, AQueryIsNoPartOfThePath) {
    EXPECT_EQ(request(port_, {"GET", "/get?r=1", "", "", "", "", ""}).status, 200);
    EXPECT_EQ(request(port_, {"GET", "/nothing?/get", "", "", "", "", ""}).status, 404);
}

TEST_F(HttpServerTest, ATargetMayHoldTheWholeAddress) {
    for (const char* whole : {"http://localhost/get", "https://localhost:8080/get?r=1"})
        EXPECT_EQ(request(port_, {"GET", whole, "", "", "", "", ""}).status, 200) << whole;
    for (const char* none :
         {"http://localhost", "http://localhost?/get", "http:///nothing", "ftp://localhost/get"})
        EXPECT_EQ(request(port_, {"GET", none, "", "", "", "", ""}).status, 404) << none;
}

TEST_F(HttpServerTest, ABodyOverTheLimitIsRefusedBeforeItIsRead) {
    Connection connection(port_);
    connection.send(
        "POST /echo HTTP/1.1\r\nHost: x\r\nAuthorization: Bearer good\r\nContent-Length: 1048577\r\n\r\n");
    EXPECT_EQ(connection.readReply().status, 413);
}

TEST_F(HttpServerTest, AnUploadUnderWayStillGetsItsRefusal) {
    Call call{"POST", "/echo", "good", "a/b", "", "", std::string(40 * limit, 'x')};
    EXPECT_EQ(request(port_, call).status, 413);
    call.path = "/nothing";
    EXPECT_EQ(request(port_, call).status, 404);
    call.path = "/echo";
    call.token = "bad";
    call.body.resize(limit);
    EXPECT_EQ(request(port_, call).status, 401);
}

TEST_F(HttpServerTest, ABodyInChunksIsCountedAsItComes) {
    const std::string head = "POST /echo HTTP/1.1\r\nHost: x\r\nAuthorization: Bearer good\r\n"
                             "Transfer-Encoding: chunked\r\n\r\n";
    Connection small(port_);
    small.send(head + "3\r\nabc\r\n2\r\nde\r\n0\r\n\r\n");
    EXPECT_EQ(small.readReply().body, "7|||5");
    Connection large(port_);
    large.send(head);
    for (int i = 0; i < 17 && large.send("10000\r\n" + std::string(65536, 'x') + "\r\n"); ++i) {
    }
    EXPECT_EQ(large.readReply().status, 413);
}

TEST_F(HttpServerTest, TheBodyIsAskedForOnlyWhenItIsWanted) {
    Call call{"POST", "/echo", "good", "a/b", "", "Expect: 100-continue\r\n", std::string(limit, 'x')};
    const auto text = requestText(call);
    const auto head = text.substr(0, text.size() - call.body.size());
    Connection wanted(port_);
    wanted.send(head);
    EXPECT_EQ(wanted.readHead().status, 100);
    wanted.send(call.body);
    EXPECT_EQ(wanted.readReply().status, 200);
    call.token = "bad";
    const auto refused = requestText(call);
    Connection unwanted(port_);
    unwanted.send(refused.substr(0, refused.size() - call.body.size()));
    EXPECT_EQ(unwanted.readReply().status, 401);
}

TEST_F(HttpServerTest, WhatIsNotHttpIsABadRequest) {
    for (const char* text :
         {"hello\r\n\r\n", "GET\r\n\r\n", "POST /echo HTTP/1.1\r\nHost: x\r\nContent-Length: -1\r\n\r\n",
          "POST /echo HTTP/1.1\r\nHost: x\r\nContent-Length: 99999999999999999999999\r\n\r\n",
          "POST /open HTTP/1.1\r\nHost: x\r\nContent-Length: 3\r\nContent-Length: 4\r\n\r\nabc",
          "GET /get HTTP/9.9\r\nHost: x\r\n\r\n", "\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03"}) {
        Connection connection(port_);
        connection.send(text);
        EXPECT_EQ(connection.readReply().status, 400) << text;
    }
    Connection chunk(port_);
    chunk.send("POST /open HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\nxyz\r\n");
    EXPECT_EQ(chunk.readReply().status, 400);
}

// A proxy before us may take the first reading, and what we take for a second request for a body.
TEST_F(HttpServerTest, ARequestThatCanBeReadInTwoWaysIsRefusedAndEndsItsConnection) {
    const std::string second = "GET /get HTTP/1.1\r\nHost: x\r\n\r\n";
    const std::string open = "POST /open HTTP/1.1\r\nHost: x\r\n";
    const std::string abc = "Content-Length: 3\r\n\r\nabc";
    const std::string chunks = "\r\n3\r\nabc\r\n0\r\n\r\n";
    for (const auto& text : {
             open + "Transfer-Encoding: chunked\r\n" + abc,
             open + "Content-Length: 3\r\nTransfer-Encoding: chunked\r\n" + chunks,
             open + "Transfer-Encoding: xchunked\r\n" + abc,
             open + "Transfer-Encoding: identity\r\n" + abc,
             open + "Transfer-Encoding: gzip, chunked\r\n" + chunks,
             open + "Transfer-Encoding: chunked, chunked\r\n" + chunks,
             open + "Transfer-Encoding: chunked\r\nTransfer-Encoding: identity\r\n" + chunks,
             open + "Transfer-Encoding:\r\n chunked\r\n" + abc,
             open + "Content-Length: 3\r\nContent-Length: 4\r\n\r\nabc",
             open + "Content-Length: 3\r\nContent-Length: 3\r\n\r\nabc",
             open + "Content-Length: 3, 3\r\n\r\nabc",
             open + "Content-Length : 3\r\n\r\nabc",
             open + "Content-Length: +3\r\n\r\nabc",
             open + "Host: y\r\n" + abc,
             open + "Authorization: Bearer good\r\nAuthorization: Bearer bad\r\n" + abc,
             "POST /open HTTP/1.1\r\n" + abc,
             "POST /open HTTP/1.0\r\nTransfer-Encoding: chunked\r\n" + chunks,
             "POST /open HTTP/1.1\nHost: x\n" + abc,
             open + "X: a\rContent-Length: 0\r\n" + abc,
         }) {
        Connection connection(port_);
        connection.send(text + second);
        connection.shutdownSend();
        const auto all = connection.readAll();
        EXPECT_TRUE(all.starts_with("HTTP/1.1 400 ") || all.starts_with("HTTP/1.0 400 ")) << text << all;
        EXPECT_EQ(all.find("HTTP/1", 8), std::string::npos) << "nothing after it is answered: " << text;
    }
}

TEST_F(HttpServerTest, ChunkExtensionsAndTrailersDoNotFillTheMemory) {
    const std::string head = "POST /open HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n";
    const std::string trailer = "X: " + std::string(1000, 'y') + "\r\n";
    for (const auto& [begin, more] :
         {std::pair(head + "3;", std::string(1000, 'x')), std::pair(head + "3\r\nabc\r\n0\r\n", trailer),
          std::pair(head + "0\r\nX: ", std::string(1000, 'y'))}) {
        Connection connection(port_);
        connection.send(begin);
        for (int i = 0; i < 1000 && connection.send(more); ++i) {
        }
        EXPECT_EQ(connection.readReply().status, 400) << begin;
    }
    Connection fine(port_);
    fine.send(head + "3;a=b\r\nabc\r\n0\r\nX: y\r\n\r\n");
    EXPECT_EQ(fine.readReply().body, "0|||3");
}

TEST_F(HttpServerTest, AHeaderTooLargeIsRefused) {
    Connection connection(port_);
    connection.send("GET /get HTTP/1.1\r\nX-Long: " + std::string(20'000, 'x') + "\r\n\r\n");
    EXPECT_EQ(connection.readReply().status, 431);
}

TEST_F(HttpServerTest, AHandlersFailureIsAStatusOrALine) {
    EXPECT_EQ(request(port_, {"GET", "/throws", "", "", "", "", ""}).status, 500);
    const auto late = request(port_, {"GET", "/throws-late", "", "", "", "", ""});
    EXPECT_EQ(late.status, 200);
    EXPECT_EQ(late.body, "one\n{\"type\":\"error\",\"error\":\"server\"}\n");
    EXPECT_EQ(request(port_, {"GET", "/get", "", "", "", "", ""}).status, 200);
}

TEST_F(HttpServerTest, LinesComeInOrderAndUnbuffered) {
    const auto reply = request(port_, {"GET", "/lines", "", "", "", "", ""});
    EXPECT_EQ(reply.headers.at("content-type"), "application/x-ndjson");
    EXPECT_EQ(reply.headers.at("x-accel-buffering"), "no");
    EXPECT_EQ(reply.body, "one\ntwo\nthree\n");
}

// The worker may finish at any moment of the answering; none of them may leave the client waiting.
TEST_F(HttpServerTest, NoAnswerIsLostHoweverItFallsInTime) {
    Connection connection(port_);
    connection.setPatience(std::chrono::seconds(10));
    for (int round = 0; round < 5000; ++round)
        ASSERT_EQ(request(connection, {"GET", "/lines", "", "", "", "", ""}).body, "one\ntwo\nthree\n")
            << round;
}

TEST_F(HttpServerTest, AClientOfTheOldProtocolGetsLinesUntilTheEnd) {
    Connection connection(port_);
    connection.send("GET /lines HTTP/1.0\r\n\r\n");
    const auto all = connection.readAll();
    EXPECT_TRUE(all.ends_with("\r\n\r\none\ntwo\nthree\n")) << all;
}

TEST_F(HttpServerTest, ManyConnectionsLeaveNothingBehind) {
    for (int round = 0; round < 200; ++round) {
        Connection connection(port_);
        connection.send(round % 2 ? "GET /lines HT" : "POST /echo HTTP/1.1\r\nContent-Length: 10\r\n\r\nab");
        if (round % 3 == 0)
            connection.reset();
    }
    EXPECT_TRUE(eventually([&] { return server_.server().connections() == 0; }))
        << server_.server().connections();
}

// Any answer is right; the server has to be there afterwards.
TEST_F(HttpServerTest, RandomBytesDoNoHarm) {
    std::srand(5);
    const std::string pieces[] = {"POST ",
                                  "GET ",
                                  "/echo",
                                  "/lines",
                                  " HTTP/1.1",
                                  "\r\n",
                                  "\r\n\r\n",
                                  "Content-Length: ",
                                  "5",
                                  "4294967296",
                                  "Transfer-Encoding: chunked",
                                  "0",
                                  ":",
                                  "Authorization: Bearer good",
                                  "Expect: 100-continue",
                                  std::string(1, '\0'),
                                  "\xff",
                                  "x"};
    for (int round = 0; round < 1000; ++round) {
        std::string text = round % 2 ? "POST /echo HTTP/1.1\r\n" : "";
        for (int k = std::rand() % 12; k > 0; --k)
            text += pieces[static_cast<std::size_t>(std::rand()) % std::size(pieces)];
        Connection connection(port_);
        connection.send(text);
        if (round % 50 == 0) {
            connection.shutdownSend();
            connection.readAll();
        }
    }
    EXPECT_EQ(request(port_, {"GET", "/get", "", "", "", "", ""}).status, 200);
    EXPECT_TRUE(eventually([&] { return server_.server().connections() == 0; }));
}
