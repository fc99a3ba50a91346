// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/test/ApiFixture.h"
#include "platform/linux/desktop/QtClock.h"
#include "platform/linux/desktop/QtHttpClient.h"
#include "support/ScriptedBackend.h"
#include "support/Wait.h"

using namespace lorvane;

namespace {

using Sent = Result<HttpResponse, TransportError>;

QCoro::Task<QStringList> readAll(HttpClient& client, HttpRequest request, TaskScope scope) {
    QStringList seen;
    auto stream = co_await client.open(std::move(request), scope);
    if (!stream) {
        co_return QStringList{"(not opened)"};
    }
    seen.append(QString::number((*stream)->status()));
    for (;;) {
        const auto line = co_await (*stream)->nextLine(scope);
        if (!line) {
            seen.append("(broken)");
            co_return seen;
        }
        if (!*line) {
            seen.append("(end)");
            co_return seen;
        }
        seen.append(QString::fromUtf8(**line));
    }
}

/// The same server behind the fake and behind real sockets.
class HttpClientContract : public ::testing::TestWithParam<bool> {
 protected:
    HttpClientContract() {
        if (GetParam()) {
            client = std::make_unique<QtHttpClient>(realTime);
        } else {
            auto made = std::make_unique<FakeHttpClient>(virtualTime);
            fake = made.get();
            client = std::move(made);
        }
    }
    void answers(const QByteArray& body, int status = 200) {
        if (fake != nullptr) {
            fake->answer("/path", {.status = status, .body = body});
        } else {
            server.script("/path", ScriptedReply::body(body, status));
        }
    }
    void breaksAfter(const QByteArray& body) {
        if (fake != nullptr) {
            fake->answer("/path", {.body = body, .breaksWith = TransportError{"broken"}});
        } else {
            ScriptedReply reply;
            reply.pieces = {body + "and more"};
            reply.dropAfter = body.size();
            server.script("/path", reply);
        }
    }
    void neverAnswers() {
        if (fake != nullptr) {
            fake->answer("/path", {.delay = seconds(1e6)});
        } else {
            server.script("/path", {.neverAnswers = true});
        }
    }
    HttpRequest request(const char* path = "/path") {
        QUrl url = server.url();
        url.setPath(path);
        return {"POST", url, {{"X-Header", "value"}}, "body", seconds(60)};
    }
    Sent send(HttpRequest wanted) {
        Running<Sent> call([&](TaskScope scope) { return client->send(wanted, scope); });
        EXPECT_TRUE(waitUntil([&] { return call.isDone(); }));
        return call.value();
    }
    QStringList lines() {
        Running<QStringList> call([&](TaskScope scope) { return readAll(*client, request(), scope); });
        EXPECT_TRUE(waitUntil([&] { return call.isDone(); }));
        return call.value();
    }

    ScriptedBackend server;
    QtClock realTime;
    VirtualClock virtualTime;
    FakeHttpClient* fake = nullptr;
    std::unique_ptr<HttpClient> client;
};

TEST_P(HttpClientContract, GivesStatusAndBody) {
    answers("the body", 201);
    const auto answer = send(request());
    ASSERT_TRUE(answer.has_value());
    EXPECT_EQ(answer->status, 201);
    EXPECT_EQ(answer->body, "the body");
}

TEST_P(HttpClientContract, AStatusOfAFailureIsAnAnswer) {
    const std::vector<int> statuses{400, 401, 403, 404, 413, 422, 429, 500, 503};
    for (const int status : statuses) {
        answers("why", status);
    }
    for (const int status : statuses) {
        const auto answer = send(request());
        ASSERT_TRUE(answer.has_value()) << status;
        EXPECT_EQ(answer->status, status);
        EXPECT_EQ(answer->body, "why");
    }
}

TEST_P(HttpClientContract, ARedirectIsTheStatusThatItIs) {
    answers("", 302);
    const auto answer = send(request());
    ASSERT_TRUE(answer.has_value());
    EXPECT_EQ(answer->status, 302);
}

TEST_P(HttpClientContract, LinesComeWithoutTheirEndsAndTheLastNeedsNone) {
    answers("one\n\ntwo\r\nthree");
    EXPECT_EQ(lines(), (QStringList{"200", "one", "", "two", "three", "(end)"}));
}

TEST_P(HttpClientContract, AnEmptyBodyHasNoLine) {
    answers("");
    EXPECT_EQ(lines(), (QStringList{"200", "(end)"}));
}

TEST_P(HttpClientContract, ABrokenBodyGivesItsWholeLinesFirst) {
    breaksAfter("one\ntwo\nthr");
    EXPECT_EQ(lines(), (QStringList{"200", "one", "two", "(broken)"}));
    EXPECT_FALSE(send(request()).has_value());
}

TEST_P(HttpClientContract, AnAddressThatIsNoneFailsInTransport) {
    HttpRequest wanted = request();
    wanted.url = QUrl();
    EXPECT_FALSE(send(wanted).has_value());
}

TEST_P(HttpClientContract, ACancelledRequestEndsAtOnce) {
    neverAnswers();
    Running<Sent> sending([&](TaskScope scope) { return client->send(request(), scope); });
    Running<QStringList> reading([&](TaskScope scope) { return readAll(*client, request(), scope); });
    EXPECT_TRUE(sending.isRunning());
    sending.cancel();
    reading.cancel();
    EXPECT_FALSE(sending.isRunning() || reading.isRunning());
    EXPECT_FALSE(sending.isDone() || reading.isDone());
}

INSTANTIATE_TEST_SUITE_P(Clients, HttpClientContract, ::testing::Bool(),
                         [](const auto& with) { return with.param ? "QtHttpClient" : "FakeHttpClient"; });

} // namespace
