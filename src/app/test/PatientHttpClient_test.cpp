// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/PatientHttpClient.h"

#include "api/testing/FakeHttpClient.h"
#include "base/testing/VirtualClock.h"

#include <gtest/gtest.h>

namespace lorvane {
namespace {

class PatientHttp : public ::testing::Test {
 protected:
    TaskHandle sendOne() {
        return startTask([this](TaskScope scope) { return post(std::move(scope)); });
    }
    QCoro::Task<void> post(TaskScope scope) {
        HttpRequest request;
        request.method = "POST";
        request.url = QUrl(QStringLiteral("http://127.0.0.1:9/api/dictate"));
        const auto result = co_await http.send(request, scope);
        status = result ? result->status : 0;
    }
    void failFirst() {
        FakeReply refused;
        refused.failsWith = TransportError{QStringLiteral("refused")};
        server.answer(QStringLiteral("/api/dictate"), refused);
        server.answer(QStringLiteral("/api/dictate"), FakeReply{});
    }
    [[nodiscard]] std::size_t sent() const {
        return server.requestsTo(QStringLiteral("/api/dictate")).size();
    }

    VirtualClock clock;
    FakeHttpClient server{clock};
    PatientHttpClient http{server, clock};
    std::optional<int> status;
};

TEST_F(PatientHttp, AnAnswerIsHandedOnAtOnce) {
    server.answer(QStringLiteral("/api/dictate"), FakeReply{.status = 429});
    http.backendStarted(true);
    const auto task = sendOne();
    clock.settle();
    EXPECT_EQ(status, 429);
    EXPECT_EQ(sent(), 1U);
}

TEST_F(PatientHttp, ARequestThatFailedGoesOutOnceMoreWhenTheBackendIsBack) {
    failFirst();
    http.backendStarted(true);
    const auto task = sendOne();
    clock.advance(seconds(1));
    EXPECT_EQ(sent(), 1U);
    EXPECT_FALSE(status);
    http.backendStarted(true);
    clock.settle();
    EXPECT_EQ(status, 200);
    EXPECT_EQ(sent(), 2U);
}

TEST_F(PatientHttp, ABackendThatCameBackMeanwhileIsAskedAtOnce) {
    failFirst();
    http.backendStarted(true);
    server.onRequest = [&](const HttpRequest&) {
        if (sent() == 1) {
            http.backendStarted(true);
        }
    };
    const auto task = sendOne();
    clock.settle();
    EXPECT_EQ(status, 200);
}

TEST_F(PatientHttp, ThePatienceEndsAfterThreeSeconds) {
    failFirst();
    http.backendStarted(true);
    const auto task = sendOne();
    clock.advance(seconds(2.9));
    EXPECT_FALSE(status);
    clock.advance(seconds(0.1));
    EXPECT_EQ(status, 0);
    EXPECT_EQ(sent(), 1U);
}

TEST_F(PatientHttp, NothingWaitsForABackendThatIsNotStartedAgain) {
    failFirst();
    http.backendStarted(false);
    const auto task = sendOne();
    clock.settle();
    EXPECT_EQ(status, 0);
    EXPECT_EQ(sent(), 1U);
}

TEST_F(PatientHttp, ACancellationEndsTheWait) {
    failFirst();
    http.backendStarted(true);
    auto task = sendOne();
    clock.advance(seconds(1));
    task.cancel();
    EXPECT_FALSE(task.isRunning());
    EXPECT_EQ(clock.pendingTimers(), 0U);
}

} // namespace
} // namespace lorvane
