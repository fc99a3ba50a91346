// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/test/ApiFixture.h"

using namespace lorvane;

namespace {

class MacAPIDictate : public ApiFixture {};
class MacAPIPart : public ApiFixture {};
class MacAPIToken : public ApiFixture {};

constexpr const char* answerBody = R"({"text":" fine ","raw":"um fine"})";

TEST_F(MacAPIDictate, SendsTheTakeAsTheTableSays) {
    holdToken();
    answer(dictatePath, {.body = answerBody});
    EXPECT_TRUE(dictate().value().has_value());
    const HttpRequest request = last(dictatePath);
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.timeout, seconds(240));
    EXPECT_EQ(header(request, "Authorization"), "Bearer t0ken");
    EXPECT_EQ(header(request, "X-Tirra-Platform"), "mac");
    EXPECT_EQ(header(request, "X-Tirra-Take"), "TAKE-1");
    EXPECT_EQ(header(request, "Content-Type"), "application/vnd.tirra.take");
    EXPECT_TRUE(request.body.endsWith("audio"));
}

TEST_F(MacAPIDictate, WithoutATakeIDThereIsNoHeader) {
    holdToken();
    DictationRequest request = plain();
    request.takeID.reset();
    EXPECT_TRUE(dictate(request).isDone());
    EXPECT_EQ(header(last(dictatePath), "X-Tirra-Take"), std::nullopt);
}

TEST_F(MacAPIDictate, TheTextIsNotTrimmed) {
    holdToken();
    answer(dictatePath, {.body = answerBody});
    const DictationResponse expected{" fine ", "um fine", {}, {}, {}};
    EXPECT_EQ(dictate().value(), expected);
}

TEST_F(MacAPIDictate, TheWholeRecordIsDecoded) {
    holdToken();
    answer(dictatePath, {.body = R"({"text":"a","raw":"b","original":"c","category":"d","more":[1],
        "goal":{"phoneWords":3,"goal":100,"met":false,"streak":2}})"});
    const DictationResponse expected{"a", "b", "c", "d", DailyGoal{3, 100, false, 2}};
    EXPECT_EQ(dictate().value(), expected);
}

TEST_F(MacAPIDictate, WhatCannotBeDecodedIsNoFailureOfTheBackend) {
    for (const char* body : {"", "no", R"({"text":"a"})", R"({"text":1,"raw":"b"})",
                             R"({"text":"a","raw":"b","goal":{"phoneWords":3,"goal":1,"met":true}})"}) {
        FakeHttpClient client(foundation.clock);
        client.answer(dictatePath, {.body = body});
        MacAPI other(client, secrets, preferences, cloud);
        other.setBackendURL(QUrl("http://127.0.0.1:1"));
        holdToken();
        Running<DictationResult> call([&other](TaskScope scope) { return other.dictate(plain(), scope); });
        EXPECT_TRUE(isTransport(call.value())) << body;
    }
}

TEST_F(MacAPIDictate, StatusesMapToTheirFailure) {
    using enum Failure::Kind;
    holdToken();
    const std::vector<std::pair<int, Failure::Kind>> table{
        {413, tooLong}, {422, noSpeech}, {429, tooManyRequests}, {400, server}, {403, server},
        {500, server},  {503, server},   {204, server},          {302, server}};
    for (const auto& [status, kind] : table) {
        answer(dictatePath, {.status = status});
    }
    for (const auto& [status, kind] : table) {
        EXPECT_EQ(dictate().value().error(), failed(kind)) << status;
    }
}

TEST_F(MacAPIDictate, ATransportErrorComesAsItStands) {
    holdToken();
    answer(dictatePath, {.failsWith = TransportError{"no route"}});
    EXPECT_EQ(dictate().value().error(), DictationError(TransportError{"no route"}));
}

TEST_F(MacAPIDictate, TheTimeOutOfTheTableEndsIt) {
    holdToken();
    answer(dictatePath, {.delay = seconds(1000)});
    auto call = dictate();
    foundation.clock.advance(seconds(239.9));
    EXPECT_FALSE(call.isDone());
    foundation.clock.advance(seconds(0.1));
    EXPECT_TRUE(isTransport(call.value()));
}

TEST_F(MacAPIDictate, ACancelledCallEndsAtOnceWithoutAResult) {
    holdToken();
    answer(dictatePath, {.delay = seconds(100)});
    auto call = dictate();
    call.cancel();
    EXPECT_FALSE(call.isRunning());
    EXPECT_FALSE(call.isDone());
}

TEST_F(MacAPIDictate, WithoutAnAddressItFailsInTransport) {
    holdToken();
    api.setBackendURL(QUrl());
    EXPECT_TRUE(isTransport(dictate().value()));
    EXPECT_TRUE(isTransport(stream().value()));
    EXPECT_EQ(part().value(), std::nullopt);
}

TEST_F(MacAPIDictate, ANewAddressCountsFromTheNextRequest) {
    holdToken();
    EXPECT_TRUE(dictate().isDone());
    api.setBackendURL(QUrl("http://127.0.0.1:4343"));
    EXPECT_TRUE(dictate().isDone());
    EXPECT_EQ(last(dictatePath).url.port(), 4343);
}

TEST_F(MacAPIToken, IsFetchedByARegistrationWhenThereIsNone) {
    answer(registerPath, {.body = R"({"token":"new"})"});
    answer(dictatePath, {.body = answerBody});
    EXPECT_TRUE(dictate().value().has_value());
    EXPECT_EQ(header(last(dictatePath), "Authorization"), "Bearer new");
}

TEST_F(MacAPIToken, NoneAfterTheRegistrationCarriesItsReason) {
    using enum RegistrationFailure;
    answer(registerPath, {.status = 503});
    answer(registerPath, {.status = 403});
    answer(registerPath, {.status = 500});
    EXPECT_EQ(dictate().value().error(), failed(Failure::Kind::noToken, busy));
    EXPECT_EQ(stream().value().error(), failed(Failure::Kind::noToken, refused));
    EXPECT_EQ(dictate().value().error(), failed(Failure::Kind::noToken, offline));
    EXPECT_EQ(count(dictatePath) + count(streamPath), 0U);
}

TEST_F(MacAPIToken, ARejectedOneIsReplacedAndTheCallRepeatedOnce) {
    for (const bool streaming : {false, true}) {
        const char* const path = streaming ? streamPath : dictatePath;
        holdToken("old");
        cloud.record = "old";
        answer(path, {.status = 401});
        answer(path, {.body = streaming ? R"({"type":"done","text":"fine","raw":"r"})" : answerBody});
        answer(registerPath, {.body = R"({"token":"new"})"});
        QString tokenAtRegistration = "none seen";
        http.onRequest = [&](const HttpRequest& request) {
            if (request.url.path() == registerPath) {
                tokenAtRegistration = preferences.get(preference::token);
            }
        };
        EXPECT_TRUE((streaming ? stream() : dictate()).value().has_value());
        EXPECT_EQ(tokenAtRegistration, "");
        EXPECT_EQ(cloud.retired.takeLast(), "old");
        ASSERT_EQ(count(path), 2U);
        EXPECT_EQ(header(http.requestsTo(path)[0], "Authorization"), "Bearer old");
        EXPECT_EQ(header(http.requestsTo(path)[1], "Authorization"), "Bearer new");
        EXPECT_EQ(header(http.requestsTo(path)[1], "X-Tirra-Take"), "TAKE-1");
        EXPECT_EQ(http.requestsTo(path)[0].body, http.requestsTo(path)[1].body);
        EXPECT_EQ(http.openStreams, 0);
    }
}

TEST_F(MacAPIToken, ASecondRejectionIsAServerFailure) {
    for (const char* path : {dictatePath, streamPath}) {
        holdToken();
        answer(path, {.status = 401});
        answer(registerPath, {.body = R"({"token":"new"})"});
        auto call = path == dictatePath ? dictate() : stream();
        EXPECT_EQ(call.value().error(), failed(Failure::Kind::server));
        EXPECT_EQ(count(path), 2U);
    }
}

TEST_F(MacAPIToken, ARejectionWithoutARetryIsAServerFailureAtOnce) {
    holdToken();
    DictationRequest request = plain();
    request.allowRetry = false;
    answer(dictatePath, {.status = 401});
    answer(streamPath, {.status = 401});
    EXPECT_EQ(dictate(request).value().error(), failed(Failure::Kind::server));
    EXPECT_EQ(stream(request).value().error(), failed(Failure::Kind::server));
    EXPECT_EQ(preferences.get(preference::token), "t0ken");
    EXPECT_EQ(count(registerPath), 0U);
}

TEST_F(MacAPIToken, ARejectionWhoseRegistrationFailsIsNoToken) {
    holdToken();
    answer(dictatePath, {.status = 401});
    answer(registerPath, {.status = 503});
    EXPECT_EQ(dictate().value().error(), failed(Failure::Kind::noToken, RegistrationFailure::busy));
    EXPECT_EQ(count(dictatePath), 1U);
    EXPECT_EQ(count(registerPath), 2U);
}

TEST_F(MacAPIToken, NoLogLineHoldsItOrTheText) {
    holdToken("s3cret");
    answer(dictatePath, {.body = answerBody});
    answer(streamPath, {.status = 500});
    EXPECT_TRUE(dictate().isDone());
    EXPECT_TRUE(stream().isDone());
    EXPECT_TRUE(part().isDone());
    EXPECT_TRUE(foundation.lines.filter("s3cret").isEmpty());
    EXPECT_TRUE(foundation.lines.filter("fine").isEmpty());
}

TEST_F(MacAPIPart, SendsThePartWithoutATakeID) {
    holdToken();
    answer(partPath, {.body = R"({"text":"raw words","more":1})"});
    EXPECT_EQ(part("before").value(), "raw words");
    const HttpRequest request = last(partPath);
    EXPECT_EQ(request.timeout, seconds(20));
    EXPECT_EQ(header(request, "Authorization"), "Bearer t0ken");
    EXPECT_EQ(header(request, "X-Tirra-Platform"), "mac");
    EXPECT_EQ(header(request, "X-Tirra-Take"), std::nullopt);
    EXPECT_TRUE(request.body.contains(R"("context":"before")"));
}

TEST_F(MacAPIPart, WithoutATokenItDoesNotRegister) {
    EXPECT_EQ(part().value(), std::nullopt);
    EXPECT_TRUE(http.requests.empty());
}

TEST_F(MacAPIPart, EverythingElseIsAbsent) {
    holdToken();
    const std::vector<FakeReply> replies{{.status = 401},
                                         {.status = 500},
                                         {.status = 204, .body = R"({"text":"x"})"},
                                         {.body = "no"},
                                         {.body = R"(["text"])"},
                                         {.body = R"({"text":1})"},
                                         {.body = R"({})"},
                                         {.failsWith = TransportError{"gone"}}};
    for (const FakeReply& reply : replies) {
        answer(partPath, reply);
    }
    for (const FakeReply& reply : replies) {
        EXPECT_EQ(part().value(), std::nullopt) << reply.status << reply.body.toStdString();
    }
    EXPECT_EQ(count(partPath), replies.size());
    EXPECT_EQ(count(registerPath), 0U);
}

} // namespace
