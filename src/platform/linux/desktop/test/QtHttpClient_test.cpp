// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/desktop/QtHttpClient.h"

#include "api/test/ApiFixture.h"
#include "platform/linux/desktop/QtClock.h"
#include "support/ScriptedBackend.h"
#include "support/Wait.h"

#include <QFile>
#include <QTcpServer>
#include <QTcpSocket>

#include <algorithm>
#include <iostream>

using namespace lorvane;

namespace {

using Sent = Result<HttpResponse, TransportError>;
using Line = Result<std::optional<QByteArray>, TransportError>;

qint64 residentKiB() {
    QFile file("/proc/self/status");
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith("VmRSS:")) {
            return line.mid(6).trimmed().split(' ').first().toLongLong();
        }
    }
    return -1;
}

class QtHttp : public ::testing::Test {
 protected:
    HttpRequest request(const char* path = "/path") {
        QUrl url = server.url();
        url.setPath(path);
        return {"POST", url, {{"Authorization", "Bearer t"}}, "body", seconds(60)};
    }
    Running<Sent> begin(HttpRequest wanted) {
        return Running<Sent>([this, wanted](TaskScope scope) { return client.send(wanted, scope); });
    }
    Sent send(HttpRequest wanted) {
        auto call = begin(std::move(wanted));
        EXPECT_TRUE(waitUntil([&] { return call.isDone(); }));
        return call.value();
    }
    bool received(std::size_t count) {
        return waitUntil([&] { return server.requests().size() == count; });
    }

    ScriptedBackend server;
    QtClock clock;
    VirtualClock idle;
    QtHttpClient client{clock};
    QtHttpClient impatient{idle};
};

TEST_F(QtHttp, SendsWhatItWasGiven) {
    server.script("/path", ScriptedReply::body("fine"));
    HttpRequest wanted = request();
    wanted.body = QByteArray("\0\r\n\xff", 4) + QByteArray(300'000, 'x');
    ASSERT_TRUE(send(wanted).has_value());
    ASSERT_EQ(server.requests().size(), 1U);
    const RecordedRequest got = server.requests().front();
    EXPECT_EQ(got.method, "POST");
    EXPECT_EQ(got.headers.at("authorization"), "Bearer t");
    EXPECT_EQ(got.headers.at("accept-encoding"), "identity");
    EXPECT_EQ(got.headers.count("upgrade"), 0U);
    EXPECT_EQ(got.headers.count("cookie"), 0U);
    EXPECT_EQ(got.body, wanted.body);
}

TEST_F(QtHttp, AnotherServerIsNeverToldTheToken) {
    ScriptedBackend other;
    other.script("/path", ScriptedReply::body("stolen"));
    for (const int status : {301, 302, 303, 307, 308}) {
        ScriptedReply away = ScriptedReply::body("", status);
        away.headers = {{"Location", other.url().toString().toLatin1() + "/path"}};
        const QByteArray path = "/" + QByteArray::number(status);
        server.script(path, away);
        const auto answer = send(request(path.constData()));
        ASSERT_TRUE(answer.has_value()) << status;
        EXPECT_EQ(answer->status, status);
    }
    EXPECT_TRUE(other.requests().empty());
}

TEST_F(QtHttp, AHeaderWithALineEndIsNotSent) {
    HttpRequest wanted = request();
    wanted.headers = {{"Authorization", "Bearer a\r\nX-Other: b"}};
    EXPECT_FALSE(send(wanted).has_value());
    EXPECT_TRUE(server.requests().empty());
}

TEST_F(QtHttp, CookiesAreNotKept) {
    ScriptedReply reply = ScriptedReply::body("fine");
    reply.headers = {{"Set-Cookie", "a=b; Path=/"}};
    server.script("/path", reply);
    ASSERT_TRUE(send(request()).has_value());
    ASSERT_TRUE(send(request()).has_value());
    EXPECT_EQ(server.requests().back().headers.count("cookie"), 0U);
}

TEST_F(QtHttp, ARefusedConnectionIsATransportError) {
    HttpRequest wanted = request();
    {
        const ScriptedBackend gone;
        wanted.url.setPort(gone.port());
    }
    EXPECT_FALSE(send(wanted).has_value());
}

TEST_F(QtHttp, AnAnswerThatIsNotHttpIsATransportError) {
    // A TLS greeting to a plain server never gets an answer of its own kind.
    HttpRequest wanted = request();
    wanted.url.setScheme("https");
    auto call = Running<Sent>([&](TaskScope scope) { return impatient.send(wanted, scope); });
    ASSERT_TRUE(waitUntil([&] { return server.openConnections() > 0; }));
    idle.advance(seconds(61));
    EXPECT_TRUE(waitUntil([&] { return call.isDone(); }));
    EXPECT_FALSE(call.value().has_value());
}

TEST_F(QtHttp, AServerThatNeverAnswersCostsTheTimeOut) {
    server.script("/path", {.neverAnswers = true});
    auto call = Running<Sent>([&](TaskScope scope) { return impatient.send(request(), scope); });
    ASSERT_TRUE(received(1));
    idle.advance(seconds(59));
    EXPECT_FALSE(call.isDone());
    idle.advance(seconds(61));
    EXPECT_TRUE(waitUntil([&] { return call.isDone(); }));
    EXPECT_EQ(call.value().error().description, "the request timed out");
}

TEST_F(QtHttp, ADroppedConnectionIsATransportErrorAndIsNotRepeated) {
    server.script("/path", {.dropsAtOnce = true});
    EXPECT_FALSE(send(request()).has_value());
    EXPECT_EQ(server.requests().size(), 1U);
}

TEST_F(QtHttp, AnAnswerThatHasBegunIsNotAskedForAgain) {
    server.script("/path", ScriptedReply::body("fine"));
    ScriptedReply half = ScriptedReply::body("half of it");
    half.dropAfter = 4;
    server.script("/path", half);
    ASSERT_TRUE(send(request()).has_value());
    EXPECT_FALSE(send(request()).has_value());
    EXPECT_EQ(server.requests().size(), 2U);
}

TEST_F(QtHttp, ACancellationClosesTheConnectionWithin50Milliseconds) {
    server.script("/path", {.neverAnswers = true});
    auto call = begin(request());
    ASSERT_TRUE(received(1));
    const auto asked = std::chrono::steady_clock::now();
    call.cancel();
    ASSERT_TRUE(waitUntil([&] { return server.lastClosedByClient().has_value(); }));
    const auto took = *server.lastClosedByClient() - asked;
    std::cout << "closed after " << std::chrono::duration<double, std::milli>(took).count() << " ms\n";
    EXPECT_LE(took, std::chrono::milliseconds(50));
}

QCoro::Task<int> readSlowly(HttpClient& client, HttpRequest request, Clock& pace, int& read,
                            TaskScope scope) {
    auto stream = co_await client.open(std::move(request), scope);
    for (;;) {
        const Line line = co_await (*stream)->nextLine(scope);
        if (!line || !*line) {
            co_return line ? read : -1;
        }
        ++read;
        co_await sleep(pace, seconds(10), scope);
    }
}

constexpr int wholeFlood = 100 * 1024;

/// Lines of 1 KiB.
ScriptedReply flood(int lines = wholeFlood) {
    ScriptedReply reply;
    reply.more = [left = lines]() mutable -> std::optional<QByteArray> {
        if (left <= 0) {
            return std::nullopt;
        }
        left -= 64;
        return (QByteArray(1023, 'x') + '\n').repeated(64);
    };
    return reply;
}

TEST_F(QtHttp, ASlowConsumerStopsTheServerAndMemoryStaysFlat) {
    server.script("/path", flood());
    VirtualClock pace;
    int read = 0;
    const qint64 before = residentKiB();
    Running<int> call([&](TaskScope scope) { return readSlowly(client, request(), pace, read, scope); });
    ASSERT_TRUE(waitUntil([&] { return read == 1; }));
    // The server goes on until every buffer on the way is full, then it stands still.
    qint64 sent = -1;
    ASSERT_TRUE(waitUntil([&] {
        const qint64 now = server.bodyBytesSent();
        const bool still = now == sent;
        sent = now;
        bool passed = false;
        const Handle look = clock.after(seconds(0.3), [&] { passed = true; });
        EXPECT_TRUE(waitUntil([&] { return passed; }));
        return still;
    }));
    EXPECT_LT(sent, 16 * 1024 * 1024);
    qint64 most = residentKiB();
    for (int i = 0; i < 200; ++i) {
        pace.advance(seconds(10));
        const int wanted = i + 2;
        ASSERT_TRUE(waitUntil([&] { return read >= wanted; })) << read;
        most = std::max(most, residentKiB());
    }
    std::cout << "server stood still after " << sent / 1024 << " KiB; memory grew by " << most - before
              << " KiB\n";
    EXPECT_LT(most - before, 4 * 1024);
    call.cancel();
    EXPECT_FALSE(call.isRunning());
}

TEST_F(QtHttp, TheWholeFloodArrivesInOrderWithMemoryFlat) {
    server.script("/path", flood());
    VirtualClock pace;
    int read = 0;
    const qint64 before = residentKiB();
    Running<int> call([&](TaskScope scope) { return readSlowly(client, request(), pace, read, scope); });
    qint64 most = before;
    ASSERT_TRUE(waitUntil(
        [&] {
            for (int i = 0; i < 2000; ++i) {
                pace.advance(seconds(10));
            }
            most = std::max(most, residentKiB());
            return call.isDone();
        },
        std::chrono::minutes(2)))
        << read;
    EXPECT_EQ(call.value(), wholeFlood);
    std::cout << wholeFlood / 1024 << " MiB in " << read << " lines; memory grew by " << most - before
              << " KiB\n";
    EXPECT_LT(most - before, 4 * 1024);
}

TEST_F(QtHttp, AConsumerThatTakesItsTimeIsNoTimeOut) {
    server.script("/path", flood());
    int read = 0;
    Running<int> call([&](TaskScope scope) { return readSlowly(impatient, request(), idle, read, scope); });
    ASSERT_TRUE(waitUntil([&] { return read == 1; }));
    for (int i = 2; i < 20; ++i) {
        idle.advance(seconds(10));
        ASSERT_TRUE(waitUntil([&] { return read >= i; }));
    }
    EXPECT_FALSE(call.isDone());
}

TEST_F(QtHttp, AStreamThatFallsSilentTimesOutAfterItsLines) {
    ScriptedReply reply;
    reply.pieces = {"one\n", "two\n"};
    reply.betweenPieces = std::chrono::hours(1);
    server.script("/path", reply);
    int read = 0;
    Running<int> call([&](TaskScope scope) { return readSlowly(impatient, request(), idle, read, scope); });
    ASSERT_TRUE(waitUntil([&] { return read == 1; }));
    EXPECT_TRUE(waitUntil([&] {
        idle.advance(seconds(60));
        return call.isDone();
    }));
    EXPECT_EQ(call.value(), -1);
}

TEST_F(QtHttp, ALineWithoutEndIsRefused) {
    ScriptedReply reply;
    reply.more = []() -> std::optional<QByteArray> { return QByteArray(65536, 'x'); };
    server.script("/path", reply);
    VirtualClock pace;
    int read = 0;
    Running<int> call([&](TaskScope scope) { return readSlowly(client, request(), pace, read, scope); });
    ASSERT_TRUE(waitUntil([&] { return call.isDone(); }));
    EXPECT_EQ(call.value(), -1);
    EXPECT_EQ(read, 0);
}

// What a server that means ill says, byte by byte and without end.
class Drip {
 public:
    Drip(Clock& clock, QByteArray endless) : clock_(clock), endless_(std::move(endless)) {
        EXPECT_TRUE(server_.listen(QHostAddress::LocalHost));
        QObject::connect(&server_, &QTcpServer::newConnection, &server_, [this] {
            QTcpSocket* const socket = server_.nextPendingConnection();
            drops_ = clock_.every(std::chrono::milliseconds(10), [this, socket] {
                socket->write(endless_.mid(sent_, 1));
                sent_ = sent_ + 1 == endless_.size() ? sent_ - 10 : sent_ + 1;
            });
        });
    }
    [[nodiscard]] QUrl url() const {
        return QUrl(QStringLiteral("http://127.0.0.1:%1/path").arg(server_.serverPort()));
    }

 private:
    Clock& clock_;
    QByteArray endless_;
    qsizetype sent_ = 0;
    QTcpServer server_;
    Handle drops_;
};

TEST_F(QtHttp, AnAnswerThatDripsInEndsWithTheTimeOut) {
    for (const char* endless : {"HTTP/1.1 200 OK\r\nX: xxxxxxxxxxx", "HTTP/1.1 200 OK\r\n\r\nxxxxxxxxxxx",
                                "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n1;xxxxxxxxxxx"}) {
        const Drip drip(clock, endless);
        HttpRequest wanted = request();
        wanted.url = drip.url();
        const Instant start = idle.now();
        auto call = Running<Sent>([&](TaskScope scope) { return impatient.send(wanted, scope); });
        EXPECT_TRUE(waitUntil([&] {
            idle.advance(seconds(0.5));
            return call.isDone();
        })) << endless;
        ASSERT_FALSE(call.value().has_value());
        EXPECT_EQ(call.value().error().description, "the request timed out");
        EXPECT_LE(inSeconds(idle.now() - start), 130.0) << endless;
    }
}

TEST_F(QtHttp, AStreamThatDripsItsFramingTimesOut) {
    const Drip drip(clock, "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n1;xxxxxxxxxxx");
    HttpRequest wanted = request();
    wanted.url = drip.url();
    VirtualClock pace;
    int read = 0;
    Running<int> call([&](TaskScope scope) { return readSlowly(impatient, wanted, pace, read, scope); });
    EXPECT_TRUE(waitUntil([&] {
        idle.advance(seconds(0.5));
        return call.isDone();
    }));
    EXPECT_EQ(call.value(), -1);
}

} // namespace
