// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/desktop/HttpAnswer.h"

#include <gtest/gtest.h>

using namespace lorvane;

namespace {

/// The answer in portions of every size must read the same.
struct Read {
    QByteArray body;
    int status = 0;
    bool complete = false;
    bool broken = false;
    friend bool operator==(const Read&, const Read&) = default;
};

Read readIn(const QByteArray& bytes, qsizetype portion, bool closes) {
    HttpAnswer answer;
    Read read;
    for (qsizetype at = 0; at < bytes.size(); at += portion) {
        read.body += answer.feed(bytes.mid(at, portion));
    }
    if (closes) {
        answer.close();
    }
    read.status = answer.status();
    read.complete = answer.isComplete();
    read.broken = answer.isBroken();
    return read;
}

void expectEverywhere(const QByteArray& bytes, const Read& expected, bool closes = false) {
    for (qsizetype portion = 1; portion <= bytes.size(); ++portion) {
        EXPECT_EQ(readIn(bytes, portion, closes), expected) << portion << bytes.toStdString();
    }
}

TEST(HttpAnswer, ACountedBodyEndsWithItsCount) {
    expectEverywhere("HTTP/1.1 200 OK\r\ncontent-LENGTH: 5\r\n\r\nhelloX", {"hello", 200, true, false});
    expectEverywhere("HTTP/1.1 413 \r\nContent-Length: 0\r\n\r\n", {"", 413, true, false});
    expectEverywhere("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nhel", {"hel", 200, false, false});
    expectEverywhere("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nhel", {"hel", 200, false, true}, true);
}

TEST(HttpAnswer, ChunksAreJoined) {
    const QByteArray head = "HTTP/1.1 200 OK\r\nTransfer-Encoding: Chunked\r\n\r\n";
    expectEverywhere(head + "3\r\nabc\r\nA;x=y\r\n0123456789\r\n0\r\n\r\n",
                     {"abc0123456789", 200, true, false});
    expectEverywhere(head + "1\r\n\n\r\n0\r\nTrailer: x\r\n\r\n", {"\n", 200, true, false});
    expectEverywhere(head + "5\r\nab", {"ab", 200, false, true}, true);
    expectEverywhere(head + "2\r\nab\r\n", {"ab", 200, false, true}, true);
    expectEverywhere(head + "2\r\nabcd\r\n", {"ab", 200, false, true});
    expectEverywhere(head + "zz\r\nab", {"", 200, false, true});
    expectEverywhere(head + "-1\r\nab", {"", 200, false, true});
}

TEST(HttpAnswer, ABodyWithoutALengthEndsWithTheConnection) {
    expectEverywhere("HTTP/1.0 200 OK\r\n\r\nabc", {"abc", 200, false, false});
    expectEverywhere("HTTP/1.0 200 OK\r\n\r\nabc", {"abc", 200, true, false}, true);
}

TEST(HttpAnswer, AnAnswerOnTheWayIsSkipped) {
    expectEverywhere("HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 204 None\r\n\r\n", {"", 204, true, false});
}

TEST(HttpAnswer, AnAnswerThatHasNoBodyWaitsForNone) {
    expectEverywhere("HTTP/1.1 204 None\r\nTransfer-Encoding: chunked\r\n\r\n", {"", 204, true, false});
    expectEverywhere("HTTP/1.1 304 None\r\nContent-Length: 10\r\n\r\n", {"", 304, true, false});
}

TEST(HttpAnswer, EndlessAnswersOnTheWayAndTrailersAreBroken) {
    HttpAnswer onTheWay;
    HttpAnswer trailers;
    trailers.feed("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n");
    for (int i = 0; i < 10'000; ++i) {
        onTheWay.feed("HTTP/1.1 100 Continue\r\n\r\n");
        trailers.feed("X: y\r\nX: z\r\n");
    }
    EXPECT_TRUE(onTheWay.isBroken());
    EXPECT_TRUE(trailers.isBroken());
}

TEST(HttpAnswer, ALengthIsDigitsAndNothingElse) {
    const auto counted = [](const QByteArray& length) {
        return QByteArray("HTTP/1.1 200 OK\r\nContent-Length: " + length + "\r\n\r\nhello");
    };
    for (const char* length : {"+5", "-5", "0x5", "5 5", "", "99999999999999999999"}) {
        expectEverywhere(counted(length), {"", 200, false, true});
    }
    expectEverywhere(counted("5\r\nContent-Length: 5"), {"hello", 200, true, false});
    expectEverywhere(counted("5\r\nContent-Length: 4"), {"", 200, false, true});
    expectEverywhere(counted("many\r\nContent-Length: 5"), {"", 200, false, true});
    const QByteArray chunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
    for (const char* size : {"0x2", "+2", "", "fffffffffffffffff"}) {
        expectEverywhere(chunked + size + "\r\nab\r\n", {"", 200, false, true});
    }
}

TEST(HttpAnswer, WhatIsNoHttpIsBroken) {
    expectEverywhere("SSH-2.0-x\r\n\r\n", {"", 0, false, true});
    expectEverywhere("HTTP/1.1 abc\r\n\r\n", {"", 0, false, true});
    expectEverywhere("HTTP/1.1 200 OK\r\nContent-Length: many\r\n\r\n", {"", 200, false, true});
    expectEverywhere("HTTP/1.1 200", {"", 0, false, true}, true);
    HttpAnswer endless;
    endless.feed("HTTP/1.1 200 OK\r\nX: " + QByteArray(70'000, 'x'));
    EXPECT_TRUE(endless.isBroken());
}

} // namespace
