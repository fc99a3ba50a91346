// SPDX-License-Identifier: GPL-3.0-or-later
// The engine against servers that answer as the real kinds do, and as broken ones do.
#include "engines/AudioDecoder.h"
#include "engines/Pauses.h"
#include "engines/UpstreamEngine.h"
#include "testing/ScriptedUpstream.h"
#include "testing/ServerUnderTest.h"
#include "testing/Sound.h"

#include <gtest/gtest.h>

using namespace lorvane::backend;
using namespace lorvane::backend::testing;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

bool has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

std::string field(const std::string& request, const std::string& name) {
    const auto at = request.find("name=\"" + name + "\"\r\n\r\n");
    if (at == std::string::npos)
        return "none";
    const auto begin = request.find("\r\n\r\n", at) + 4;
    return request.substr(begin, request.find("\r\n", begin) - begin);
}

SpeechUpstream server(const ScriptedUpstream& upstream, const char* kind = "openai",
                      const std::string& key = {}) {
    return {findSpeechProfile(kind), upstream.url(), "a-model", key};
}

ScriptedUpstream::Script always(const std::string& answer) {
    return [answer](const std::string&) { return answer; };
}

const ScriptedUpstream::Script never = [](const std::string&) { return std::nullopt; };

struct Outcome {
    Recognition recognition;
    std::vector<std::string> segments;
};

UpstreamTimes quick() { return {500ms, 1s, 5s, {2s, 1ms}}; }

Outcome recognise(Engine& engine, const std::vector<std::int16_t>& samples, RecognitionJob job = {},
                  const std::stop_token& stop = {}) {
    Outcome outcome;
    job.samples = samples;
    outcome.recognition = engine.recognise(
        job, [&](HeardSegment segment) { outcome.segments.push_back(std::move(segment.text)); }, stop);
    return outcome;
}

std::string heard(Engine& engine) {
    const auto outcome = recognise(engine, tone(1, 0.3));
    if (outcome.recognition.end == Recognition::End::complete)
        return outcome.segments.at(0);
    return outcome.recognition.end == Recognition::End::failed ? "failed" : "other";
}

} // namespace

TEST(UpstreamEngine, ATakeGoesOutAsWaveWithTheFieldsOfItsKind) {
    ScriptedUpstream upstream(always(jsonAnswer(200, R"({"text":"Hello there."})")));
    UpstreamEngine engine({server(upstream, "openai", "secret-key")}, quick());
    RecognitionJob job;
    job.language = "de";
    job.context = "What came before.";
    const auto samples = tone(1, 0.3);
    const auto outcome = recognise(engine, samples, job);
    EXPECT_EQ(outcome.recognition.end, Recognition::End::complete);
    EXPECT_EQ(outcome.segments, std::vector<std::string>{"Hello there."});
    const auto request = upstream.requests().at(0);
    EXPECT_TRUE(request.starts_with("POST /v1/audio/transcriptions HTTP/1.1\r\n"));
    EXPECT_TRUE(has(request, "Authorization: Bearer secret-key\r\n"));
    EXPECT_FALSE(has(request, "Expect:"));
    EXPECT_EQ(field(request, "model"), "a-model");
    EXPECT_EQ(field(request, "language"), "de");
    EXPECT_EQ(field(request, "response_format"), "json");
    EXPECT_EQ(field(request, "temperature"), "0");
    EXPECT_EQ(field(request, "prompt"), "What came before.");
    EXPECT_TRUE(has(request, "filename=\"take.wav\""));
    const auto wav = request.substr(request.find("RIFF"), wavOf(samples).size());
    const auto decoded = decodeAudio(wav, 10, {});
    ASSERT_TRUE(std::holds_alternative<std::vector<std::int16_t>>(decoded));
    EXPECT_EQ(std::get<std::vector<std::int16_t>>(decoded), samples);
}

TEST(UpstreamEngine, EachKindIsAskedInItsOwnWay) {
    const std::tuple<const char*, const char*, const char*, const char*> kinds[] = {
        {"openai", "/v1/audio/transcriptions", "none", "before"},
        {"whispercpp", "/inference", "auto", "before"},
        {"speaches", "/v1/audio/transcriptions", "none", "before"},
        {"vllm", "/v1/audio/transcriptions", "none", "before"},
        {"llamacpp", "/v1/audio/transcriptions", "none", "none"},
        {"ollama", "/v1/audio/transcriptions", "none", "none"},
        {"generic", "/v1/audio/transcriptions", "none", "none"}};
    for (const auto& [kind, path, language, prompt] : kinds) {
        ScriptedUpstream upstream(always(jsonAnswer(200, R"({"text":"x"})")));
        UpstreamEngine engine({server(upstream, kind)}, quick());
        RecognitionJob job;
        job.context = "before";
        recognise(engine, tone(1, 0.3), job);
        const auto request = upstream.requests().at(0);
        EXPECT_TRUE(request.starts_with("POST " + std::string(path) + ' ')) << kind;
        EXPECT_EQ(field(request, "language"), language) << kind;
        EXPECT_EQ(field(request, "prompt"), prompt) << kind;
        EXPECT_FALSE(has(request, "Authorization")) << kind;
    }
    EXPECT_EQ(findSpeechProfile("other"), nullptr);
}

TEST(UpstreamEngine, TheTextOfEveryKindsAnswerIsTaken) {
    const std::pair<std::string, std::string> answers[] = {
        {R"({"text":" My first\n second line \n"})", "My first second line"},
        {R"({"text":"With usage.","usage":{"type":"duration","seconds":3}})", "With usage."},
        {R"({"text":"With nulls.","words":null,"segments":null})", "With nulls."},
        {R"({"text":"Привет, мир."})", "Привет, мир."},
        {R"({"text":""})", ""}};
    for (const auto& [body, text] : answers) {
        ScriptedUpstream upstream(always(jsonAnswer(200, body, "text/html; charset=utf-8")));
        UpstreamEngine engine({server(upstream)}, quick());
        const auto outcome = recognise(engine, tone(1, 0.3));
        EXPECT_EQ(outcome.segments, std::vector<std::string>{text}) << body;
        EXPECT_EQ(outcome.recognition.end,
                  text.empty() ? Recognition::End::noSpeech : Recognition::End::complete);
    }
}

TEST(UpstreamEngine, SilenceIsNotSentAnywhere) {
    ScriptedUpstream upstream(always(jsonAnswer(200, R"({"text":"Thanks for watching!"})")));
    UpstreamEngine engine({server(upstream)}, quick());
    for (const auto& samples : {std::vector<std::int16_t>(48'000), tone(2, 0.001), tone(0.2, 0.3)})
        EXPECT_EQ(recognise(engine, samples).recognition.end, Recognition::End::noSpeech);
    EXPECT_TRUE(upstream.requests().empty());
}

TEST(UpstreamEngine, WhoeverCannotAnswerLeavesTheTakeToTheNext) {
    const std::string broken[] = {
        jsonAnswer(408, ""),
        jsonAnswer(429, R"({"error":{"message":"busy"}})"),
        jsonAnswer(500, "oops", "text/plain"),
        jsonAnswer(502, ""),
        jsonAnswer(503, R"({"error":"loading"})"),
        jsonAnswer(401, ""),
        jsonAnswer(403, R"({"detail":"wrong key"})"),
        jsonAnswer(404, "File Not Found (/inference)", "text/plain"),
        jsonAnswer(413, ""),
        "HTTP/1.1 302 Found\r\nLocation: http://127.0.0.1:1/\r\nContent-Length: 0\r\n\r\n",
        jsonAnswer(200, "no json"),
        jsonAnswer(200, R"({"txt":"x"})"),
        jsonAnswer(200, R"({"text":7})"),
        jsonAnswer(200, R"({"error":{"message":"failed"}})"),
        "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{\"text\":\"cut",
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\n{\"tex",
        "garbage",
        ""};
    for (const auto& answer : broken) {
        ScriptedUpstream first(always(answer));
        ScriptedUpstream second(always(jsonAnswer(200, R"({"text":"Second."})")));
        UpstreamEngine engine({server(first), server(second)}, quick());
        EXPECT_EQ(heard(engine), "Second.") << answer;
        EXPECT_EQ(first.requests().size(), 1U) << answer;
    }
}

TEST(UpstreamEngine, ANameWithoutAServerAndASilentServerAreGivenUpInTime) {
    ScriptedUpstream silent(never);
    ScriptedUpstream good(always(jsonAnswer(200, R"({"text":"Good."})")));
    const SpeechUpstream nobody{findSpeechProfile("generic"), "http://127.0.0.1:1", "", ""};
    auto times = quick();
    times.answer = 300ms;
    times.connect = 200ms;
    UpstreamEngine engine({nobody, server(silent), server(good)}, times);
    const auto began = Clock::now();
    EXPECT_EQ(heard(engine), "Good.") << "the answer time is twice the sound, 2 s";
    const auto took = Clock::now() - began;
    EXPECT_GE(took, 1900ms);
    EXPECT_LT(took, 6s);
    EXPECT_TRUE(eventually([&] { return silent.abandoned() == 1; }));
}

TEST(UpstreamEngine, SoundThatIsRefusedIsNotTriedElsewhere) {
    for (const int status : {400, 415, 422}) {
        ScriptedUpstream first(always(jsonAnswer(status, R"({"error":{"message":"secret words"}})")));
        ScriptedUpstream second(always(jsonAnswer(200, R"({"text":"Second."})")));
        UpstreamEngine engine({server(first), server(second)}, quick());
        const auto outcome = recognise(engine, tone(1, 0.3));
        EXPECT_EQ(outcome.recognition.end, Recognition::End::failed);
        EXPECT_FALSE(has(outcome.recognition.reason, "secret"));
        EXPECT_TRUE(second.requests().empty());
    }
}

TEST(UpstreamEngine, AllAreTriedASecondTimeAndNoMore) {
    std::atomic<int> calls = 0;
    ScriptedUpstream upstream([&](const std::string&) {
        return std::optional(++calls == 1 ? jsonAnswer(503, "") : jsonAnswer(200, R"({"text":"Again."})"));
    });
    UpstreamEngine engine({server(upstream)}, quick());
    EXPECT_EQ(heard(engine), "Again.");
    ScriptedUpstream down(always(jsonAnswer(503, "")));
    UpstreamEngine hopeless({server(down)}, quick());
    EXPECT_EQ(heard(hopeless), "failed");
    EXPECT_EQ(down.requests().size(), 2U);
}

TEST(UpstreamEngine, AServerThatFailsAgainAndAgainIsLeftAlone) {
    ScriptedUpstream down(always(jsonAnswer(503, "")));
    ScriptedUpstream good(always(jsonAnswer(200, R"({"text":"Good."})")));
    UpstreamEngine engine({server(down), server(good)}, quick());
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(heard(engine), "Good.");
    EXPECT_EQ(down.requests().size(), std::size_t(CircuitBreaker::failuresToOpen));
}

TEST(CircuitBreaker, OpensAfterThreeFailuresForLongerAndLonger) {
    CircuitBreaker breaker;
    Clock::time_point now{};
    for (int i = 0; i < 2; ++i)
        breaker.failed(now);
    EXPECT_TRUE(breaker.allows(now));
    breaker.succeeded();
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(breaker.allows(now));
        breaker.failed(now);
    }
    EXPECT_FALSE(breaker.allows(now + 9s));
    EXPECT_TRUE(breaker.allows(now + 10s)) << "a single one";
    EXPECT_FALSE(breaker.allows(now + 10s));
    now += 10s;
    breaker.failed(now);
    EXPECT_FALSE(breaker.allows(now + 19s));
    for (int pause = 20; pause < 120; pause *= 2) {
        now += std::chrono::seconds(pause);
        EXPECT_TRUE(breaker.allows(now)) << pause;
        breaker.failed(now);
    }
    EXPECT_FALSE(breaker.allows(now + 119s));
    EXPECT_TRUE(breaker.allows(now + 120s));
    breaker.succeeded();
    EXPECT_TRUE(breaker.allows(now));
    EXPECT_TRUE(breaker.allows(now));
}

TEST(CircuitBreaker, ThoseWhoFailTogetherAreOneFailureOfAnOpenOne) {
    CircuitBreaker breaker;
    Clock::time_point now{};
    for (int i = 0; i < 16; ++i)
        breaker.failed(now);
    EXPECT_FALSE(breaker.allows(now + 9s));
    EXPECT_TRUE(breaker.allows(now + 10s));
}

TEST(UpstreamEngine, TheQueuesTimeIsTheSameHoweverOftenAServerIsWaitedFor) {
    ScriptedUpstream busy(never);
    auto times = quick();
    times.pool.queue = 1s;
    UpstreamEngine engine({server(busy, "whispercpp")}, times);
    std::stop_source stop;
    std::thread holds([&] { recognise(engine, tone(3, 0.3), {}, stop.get_token()); });
    ASSERT_TRUE(eventually([&] { return busy.requests().size() == 1; }));
    const auto began = Clock::now();
    EXPECT_EQ(heard(engine), "failed");
    EXPECT_LT(Clock::now() - began, 1900ms) << "a second round would wait a second time";
    stop.request_stop();
    holds.join();
}

TEST(UpstreamEngine, AServerThatWorksOnOneGetsOneAtATimeAndTheOtherOneTheRest) {
    std::atomic<int> asking = 0;
    ScriptedUpstream one([&](const std::string&) {
        // The first answer comes when everybody is there, who would come in if they were let.
        EXPECT_TRUE(eventually([&] { return asking == 6; }));
        return std::optional(jsonAnswer(200, R"({"text":"x"})"));
    });
    UpstreamEngine engine({server(one, "whispercpp")}, quick());
    std::vector<std::thread> threads;
    std::atomic<int> good = 0;
    threads.reserve(6);
    for (int i = 0; i < 6; ++i)
        threads.emplace_back([&] {
            ++asking;
            good += heard(engine) == "x" ? 1 : 0;
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(good, 6);
    EXPECT_EQ(one.most(), 1);
    ScriptedUpstream first(never);
    ScriptedUpstream second(always(jsonAnswer(200, R"({"text":"Second."})")));
    UpstreamEngine two({server(first, "whispercpp"), server(second)}, quick());
    std::stop_source stop;
    std::thread holds([&] { recognise(two, tone(1, 0.3), {}, stop.get_token()); });
    ASSERT_TRUE(eventually([&] { return first.requests().size() == 1; }));
    const auto began = Clock::now();
    EXPECT_EQ(heard(two), "Second.");
    EXPECT_LT(Clock::now() - began, 1s) << "not after the queue's time";
    stop.request_stop();
    holds.join();
}

TEST(UpstreamEngine, AStopIsSeenAtOnceAndTheServerToo) {
    ScriptedUpstream upstream(never);
    UpstreamEngine engine({server(upstream)}, quick());
    std::stop_source stop;
    Clock::time_point asked{};
    std::thread stops([&] {
        eventually([&] { return upstream.requests().size() == 1; });
        asked = Clock::now();
        stop.request_stop();
    });
    const auto outcome = recognise(engine, tone(2, 0.3), {}, stop.get_token());
    const auto took = std::chrono::duration<double, std::milli>(Clock::now() - asked).count();
    stops.join();
    EXPECT_EQ(outcome.recognition.end, Recognition::End::stopped);
    EXPECT_TRUE(eventually([&] { return upstream.abandoned() == 1; }));
    std::printf("the call ended %.2f ms after the stop\n", took);
    EXPECT_LT(took, 500);
}

TEST(UpstreamEngine, ALongTakeIsSentInPartsAndGoesOnAfterTheKnownOnes) {
    std::atomic<int> calls = 0;
    ScriptedUpstream upstream([&](const std::string&) {
        return std::optional(jsonAnswer(200, R"({"text":"Part )" + std::to_string(++calls) + ".\"}"));
    });
    UpstreamEngine engine({server(upstream)}, quick());
    std::vector<std::int16_t> samples;
    const auto speech = tone(15, 0.3);
    while (samples.size() < std::size_t(sampleRate) * 700) {
        samples.insert(samples.end(), speech.begin(), speech.end());
        samples.resize(samples.size() + sampleRate);
    }
    const auto outcome = recognise(engine, samples);
    EXPECT_EQ(outcome.segments, (std::vector<std::string>{"Part 1.", "Part 2."}));
    EXPECT_EQ(field(upstream.requests().at(1), "prompt"), "Part 1.");
    for (const auto& request : upstream.requests())
        EXPECT_LT(request.size(), std::size_t(25) << 20);
    RecognitionJob job;
    job.segmentsKnown = 1;
    EXPECT_EQ(recognise(engine, samples, job).segments, std::vector<std::string>{"Part 3."});
}

TEST(UpstreamEngine, AnAnswerWithoutEndIsCutOff) {
    ScriptedUpstream flood(always("HTTP/1.1 200 OK\r\n\r\n" + std::string(std::size_t(20) << 20, 'x')));
    ScriptedUpstream good(always(jsonAnswer(200, R"({"text":"Good."})")));
    UpstreamEngine engine({server(flood), server(good)}, quick());
    EXPECT_EQ(heard(engine), "Good.");
    EXPECT_TRUE(eventually([&] { return flood.cutOff() == 1; }));
}
