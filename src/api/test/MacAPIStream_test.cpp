// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/test/ApiFixture.h"

using namespace lorvane;

namespace {

class MacAPIStream : public ApiFixture {
 protected:
    MacAPIStream() { holdToken(); }

    DictationResult linesGive(const QByteArray& body) {
        answer(streamPath, {.body = body});
        return stream().value();
    }
};

TEST_F(MacAPIStream, SendsTheTakeAsTheTableSays) {
    EXPECT_TRUE(linesGive(R"({"type":"done","text":"x"})").has_value());
    const HttpRequest request = last(streamPath);
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.timeout, seconds(240));
    EXPECT_EQ(header(request, "Authorization"), "Bearer t0ken");
    EXPECT_EQ(header(request, "X-Tirra-Platform"), "mac");
    EXPECT_EQ(header(request, "X-Tirra-Take"), "TAKE-1");
    EXPECT_EQ(header(request, "Content-Type"), "application/vnd.tirra.take");
}

TEST_F(MacAPIStream, FragmentsArriveAsTheyCameAndTheEndIsTrimmed) {
    const auto result = linesGive("{\"type\":\"delta\",\"text\":\" one\"}\n"
                                  "{\"type\":\"delta\",\"text\":\" two \\n\"}\n"
                                  "{\"type\":\"done\",\"text\":\" one two\\n\",\"raw\":\" r \"}\n");
    EXPECT_EQ(deltas, (QStringList{" one", " two \n"}));
    const DictationResponse expected{"one two", " r ", {}, {}, {}};
    EXPECT_EQ(result, expected);
}

TEST_F(MacAPIStream, DoneCarriesTheWholeRecord) {
    const auto result = linesGive(R"({"type":"done","text":"a","raw":"b","original":" c","category":"d",)"
                                  R"("goal":{"phoneWords":1,"goal":2,"met":true,"streak":3}})");
    const DictationResponse expected{"a", "b", " c", "d", DailyGoal{1, 2, true, 3}};
    EXPECT_EQ(result, expected);
}

TEST_F(MacAPIStream, DoneWithoutTextAndRawReadsThemAsEmpty) {
    const DictationResponse expected{"", "", {}, {}, {}};
    EXPECT_EQ(linesGive(R"({"type":"done"})"), expected);
}

TEST_F(MacAPIStream, BlankUnreadableAndUnknownLinesAreSkipped) {
    const auto result = linesGive("\n  \t\r\nno JSON\n[1]\n{\"text\":\"no type\"}\n{\"type\":7}\n"
                                  "{\"type\":\"delta\",\"text\":5}\n{\"type\":\"progress\",\"text\":\"x\"}\n"
                                  "\xff\xfe\n{\"type\":\"delta\",\"text\":\"in\"}\r\n"
                                  "{\"type\":\"done\",\"text\":\"in\",\"heard\":\"y\",\"else\":{}}");
    EXPECT_EQ(deltas, QStringList{"in"});
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(result->text, "in");
}

TEST_F(MacAPIStream, AnEmptyOrMissingFragmentIsNotTold) {
    EXPECT_TRUE(linesGive("{\"type\":\"delta\",\"text\":\"\"}\n{\"type\":\"delta\"}\n"
                          "{\"type\":\"delta\",\"text\":null}\n{\"type\":\"done\"}")
                    .has_value());
    EXPECT_TRUE(deltas.isEmpty());
}

TEST_F(MacAPIStream, TheRestAfterDoneIsNotRead) {
    EXPECT_TRUE(linesGive("{\"type\":\"done\"}\n{\"type\":\"delta\",\"text\":\"late\"}\n").has_value());
    EXPECT_EQ(http.linesRead, 1);
    EXPECT_EQ(http.openStreams, 0);
    EXPECT_TRUE(deltas.isEmpty());
}

TEST_F(MacAPIStream, ErrorLinesMapToTheirFailure) {
    using enum Failure::Kind;
    EXPECT_EQ(linesGive(R"({"type":"error","error":"no_speech"})").error(), failed(noSpeech));
    const std::vector<std::pair<const char*, DictationError>> table{
        {R"({"type":"error","error":"dictate_limit"})", failed(tooManyRequests)},
        {R"({"type":"error","error":"unauthorized"})", failed(noToken, RegistrationFailure::refused)},
        {R"({"type":"error","error":"anything"})", failed(server)},
        {R"({"type":"error"})", failed(server)},
    };
    for (const auto& [line, expected] : table) {
        FakeHttpClient client(foundation.clock);
        client.answer(streamPath, {.body = line});
        MacAPI other(client, secrets, preferences, cloud);
        other.setBackendURL(QUrl("http://127.0.0.1:1"));
        Running<DictationResult> call(
            [&other](TaskScope scope) { return other.dictateStream(plain(), DeltaConsumer(), scope); });
        EXPECT_EQ(call.value().error(), expected) << line;
        EXPECT_EQ(client.requests.size(), 1U);
    }
    EXPECT_EQ(preferences.get(preference::token), "t0ken");
}

TEST_F(MacAPIStream, StatusesMapToTheirFailureBeforeAnyLine) {
    using enum Failure::Kind;
    const std::vector<std::pair<int, Failure::Kind>> table{{413, tooLong}, {422, server}, {429, server},
                                                           {404, server},  {500, server}, {201, server}};
    for (const auto& [status, kind] : table) {
        answer(streamPath, {.status = status, .body = R"({"type":"done"})"});
    }
    for (const auto& [status, kind] : table) {
        EXPECT_EQ(stream().value().error(), failed(kind)) << status;
    }
    EXPECT_EQ(http.linesRead, 0);
}

TEST_F(MacAPIStream, ABodyWithoutAnEndIsALostConnectionAfterItsFragments) {
    const auto result =
        linesGive("{\"type\":\"delta\",\"text\":\"a\"}\n{\"type\":\"delta\",\"text\":\"b\"}\n");
    EXPECT_EQ(deltas, (QStringList{"a", "b"}));
    EXPECT_TRUE(isTransport(result));
}

TEST_F(MacAPIStream, ADoneWhoseGoalLacksAKeyIsALostConnection) {
    EXPECT_TRUE(
        isTransport(linesGive(R"({"type":"done","text":"a","goal":{"phoneWords":1,"goal":2,"met":true}})")));
}

TEST_F(MacAPIStream, ABrokenBodyComesAsItStandsAfterItsFragments) {
    answer(streamPath, {.body = "{\"type\":\"delta\",\"text\":\"a\"}\n{\"type\":\"do",
                        .breaksWith = TransportError{"reset"}});
    EXPECT_EQ(stream().value().error(), DictationError(TransportError{"reset"}));
    EXPECT_EQ(deltas, QStringList{"a"});
}

TEST_F(MacAPIStream, ATransportErrorBeforeTheStatusComesAsItStands) {
    answer(streamPath, {.failsWith = TransportError{"no route"}});
    EXPECT_EQ(stream().value().error(), DictationError(TransportError{"no route"}));
}

QCoro::Task<void> slowly(VirtualClock& clock, int& linesRead, std::vector<int>& readWhenDone) {
    co_await sleep(clock, seconds(10), TaskScope());
    readWhenDone.push_back(linesRead);
}

TEST_F(MacAPIStream, TheNextLineIsReadOnlyWhenTheConsumerHasReturned) {
    QByteArray body;
    for (int i = 0; i < 3; ++i) {
        body += "{\"type\":\"delta\",\"text\":\"x\"}\n";
    }
    answer(streamPath, {.body = body + R"({"type":"done","text":"xxx"})"});
    std::vector<int> readWhenDone;
    auto call = stream(plain(), [this, &readWhenDone](QString) {
        return slowly(foundation.clock, http.linesRead, readWhenDone);
    });
    foundation.clock.advance(seconds(29));
    EXPECT_FALSE(call.isDone());
    foundation.clock.advance(seconds(1));
    EXPECT_TRUE(call.value().has_value());
    EXPECT_EQ(readWhenDone, (std::vector<int>{1, 2, 3}));
}

TEST_F(MacAPIStream, ACancellationClosesTheStream) {
    answer(streamPath, {.body = "{\"type\":\"delta\",\"text\":\"x\"}\n", .lineDelay = seconds(5)});
    auto call = stream();
    EXPECT_EQ(http.openStreams, 1);
    call.cancel();
    EXPECT_FALSE(call.isRunning());
    EXPECT_EQ(http.openStreams, 0);
}

} // namespace
