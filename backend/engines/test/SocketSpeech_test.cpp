// SPDX-License-Identifier: GPL-3.0-or-later
// Servers that speak Wyoming and Vosk's WebSocket, whole and broken.
#include "engines/UpstreamEngine.h"
#include "testing/ScriptedSpeechSockets.h"
#include "testing/Sound.h"

#include <gtest/gtest.h>

using namespace lorvane::backend;
using namespace lorvane::backend::testing;
using namespace std::chrono_literals;

namespace {

UpstreamTimes quick() {
    UpstreamTimes times;
    times.connect = 2s;
    times.answer = 2s;
    times.whole = 20s;
    times.pool.secondRound = 1ms;
    return times;
}

SpeechUpstream wyoming(const ScriptedWyoming& server, const std::string& model = {}) {
    return {findSpeechProfile("wyoming"), "tcp://127.0.0.1:" + std::to_string(server.port()), model, ""};
}

SpeechUpstream vosk(const ScriptedVosk& server) {
    return {findSpeechProfile("vosk"), "ws://127.0.0.1:" + std::to_string(server.port()), "", ""};
}

struct Outcome {
    Recognition recognition;
    std::vector<std::string> segments;
    bool plain = false; // the last of them
};

Outcome recognise(Engine& engine, const std::vector<std::int16_t>& samples, std::string_view language = {},
                  const std::stop_token& stop = {}) {
    Outcome outcome;
    RecognitionJob job;
    job.samples = samples;
    job.language = language;
    outcome.recognition = engine.recognise(
        job,
        [&](HeardSegment segment) {
            outcome.segments.push_back(std::move(segment.text));
            outcome.plain = segment.plain;
        },
        stop);
    return outcome;
}

std::string heard(const SpeechUpstream& upstream, const std::vector<std::int16_t>& samples = tone(1, 0.3)) {
    UpstreamEngine engine({upstream}, quick());
    const auto outcome = recognise(engine, samples);
    return outcome.recognition.end == Recognition::End::complete ? outcome.segments.at(0) : "failed";
}

std::string bytesOf(const std::vector<std::int16_t>& samples) {
    return {reinterpret_cast<const char*>(samples.data()), samples.size() * 2};
}

} // namespace

TEST(SocketAddress, HasAHostAPortThatMayBeTheUsualOneAndAPath) {
    const auto plain = readSocketAddress("tcp://speech.local", "tcp", "10300");
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain->host + ' ' + plain->port + ' ' + plain->path, "speech.local 10300 /");
    const auto whole = readSocketAddress("ws://[::1]:2701/en", "ws", "2700");
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->host + ' ' + whole->port + ' ' + whole->path, "::1 2701 /en");
    for (const char* wrong :
         {"", "tcp://", "http://host", "tcp://host:", "tcp://host:port", "tcp://host:123456",
          "tcp://host:99999", "tcp://host:0", "tcp://:10300", "tcp:host", "tcp://[::1", "tcp://[", "tcp://[]",
          "tcp://::1", "tcp://::1:10300", "tcp://[::1]x", "tcp://[::1]x:1", "tcp://ho]st", "tcp://[::1]]:1"})
        EXPECT_FALSE(readSocketAddress(wrong, "tcp", "10300")) << wrong;
}

TEST(Wyoming, ATakeGoesOutAsEventsOfSoundAndTheTranscriptComesBack) {
    const ScriptedWyoming server(wyomingEvent("transcript", R"({"text":" Hello\n there. "})"));
    UpstreamEngine engine({wyoming(server, "small")}, quick());
    const auto samples = tone(2.5, 0.3);
    const auto outcome = recognise(engine, samples, "de");
    EXPECT_EQ(outcome.recognition.end, Recognition::End::complete) << outcome.recognition.reason;
    EXPECT_EQ(outcome.segments, std::vector<std::string>{"Hello there."});
    const auto request = server.requests().at(0);
    EXPECT_EQ(request.types, (std::vector<std::string>{"transcribe", "audio-start", "audio-chunk",
                                                       "audio-chunk", "audio-chunk", "audio-stop"}));
    EXPECT_EQ(request.sound, bytesOf(samples));
    EXPECT_EQ(request.wish, R"({"language":"de","name":"small"})");
    EXPECT_EQ(request.format, R"({"rate":16000,"width":2,"channels":1})");
}

TEST(Wyoming, TheTranscriptMayComeInAnyOfTheShapesOfAnEvent) {
    const std::string data = R"({"text":"Привет, мир."})";
    const std::string apart = R"({"type":"transcript","data_length":)" + std::to_string(data.size()) +
                              R"(,"payload_length":3})" + '\n' + data + "abc";
    const std::string announced = wyomingEvent("info", R"({"asr":[]})") +
                                  wyomingEvent("transcript-start", "{}") +
                                  wyomingEvent("transcript-chunk", R"({"text":"Привет"})");
    const std::string answers[] = {
        wyomingEvent("transcript", data),
        apart,
        announced + wyomingEvent("transcript", data),
        announced + wyomingEvent("transcript-chunk", R"({"text":", мир."})") +
            wyomingEvent("transcript-stop", "{}"),
    };
    for (const auto& answer : answers) {
        const ScriptedWyoming server(answer);
        EXPECT_EQ(heard(wyoming(server)), "Привет, мир.") << answer;
    }
}

TEST(Wyoming, ABrokenServerLeavesTheTakeToTheNext) {
    const std::string broken[] = {
        "",
        "no json\n",
        "[1]\n",
        "{\"type\":\"transcript\",\"data_length\":-1}\n",
        "{\"type\":\"transcript\",\"data_length\":99999999999}\n",
        "{\"type\":\"transcript\",\"payload_length\":\"x\"}\n",
        "{\"type\":\"transcript\",\"data_length\":20}\n{}",
        "{\"type\":\"transcript\",\"data_length\":3}\nabc",
        wyomingEvent("error", R"({"text":"out of memory"})"),
        wyomingEvent("transcript-chunk", R"({"text":"half"})"),
        std::string(70'000, 'x'),
    };
    for (const auto& answer : broken) {
        const ScriptedWyoming first(answer);
        const ScriptedWyoming second(wyomingEvent("transcript", R"({"text":"Second."})"));
        UpstreamEngine engine({wyoming(first), wyoming(second)}, quick());
        const auto outcome = recognise(engine, tone(1, 0.3));
        EXPECT_EQ(outcome.segments, std::vector<std::string>{"Second."}) << answer.substr(0, 80);
    }
}

TEST(Wyoming, ATranscriptWithoutEndLeavesTheTakeToTheNext) {
    const auto piece = wyomingEvent("transcript-chunk", R"({"text":")" + std::string(50'000, 'x') + "\"}");
    std::string endless;
    for (int i = 0; i < 30; ++i)
        endless += piece;
    const ScriptedWyoming first(endless + wyomingEvent("transcript-stop", "{}"));
    const ScriptedWyoming second(wyomingEvent("transcript", R"({"text":"Second."})"));
    UpstreamEngine engine({wyoming(first), wyoming(second)}, quick());
    EXPECT_EQ(recognise(engine, tone(1, 0.3)).segments, std::vector<std::string>{"Second."});
}

TEST(Wyoming, AnEmptyTranscriptIsNoSpeech) {
    const ScriptedWyoming server(wyomingEvent("transcript", R"({"text":""})"));
    UpstreamEngine engine({wyoming(server)}, quick());
    EXPECT_EQ(recognise(engine, tone(1, 0.3)).recognition.end, Recognition::End::noSpeech);
}

TEST(Wyoming, AStopEndsTheConversation) {
    const ScriptedWyoming silent(std::nullopt);
    UpstreamEngine engine({wyoming(silent)}, quick());
    std::stop_source source;
    std::jthread stopping([&] {
        silent.awaitRequest();
        source.request_stop();
    });
    EXPECT_EQ(recognise(engine, tone(1, 0.3), {}, source.get_token()).recognition.end,
              Recognition::End::stopped);
    EXPECT_TRUE(silent.wasLeft());
}

TEST(Vosk, ATakeGoesOutInPiecesAndEndsWithTheVeryWordThatTheServerCompares) {
    const ScriptedVosk server({R"({"partial":"hel"})", R"({"text":"hello there"})", R"({"partial":""})",
                               R"({"text":"how are you"})"});
    const auto samples = tone(2.5, 0.3);
    EXPECT_EQ(heard(vosk(server), samples), "hello there how are you");
    const auto request = server.requests().at(0);
    EXPECT_EQ(request.texts,
              (std::vector<std::string>{R"({"config":{"sample_rate":16000}})", R"({"eof" : 1})"}));
    EXPECT_EQ(request.sound, bytesOf(samples));
}

TEST(Vosk, AListWithItMayGivePlainEnglish) {
    const ScriptedVosk server({R"({"partial":""})", R"({"text":"x"})"});
    const ScriptedWyoming other(wyomingEvent("transcript", R"({"text":"X."})"));
    EXPECT_TRUE(UpstreamEngine({vosk(server)}, quick()).mayBePlain("en"));
    EXPECT_TRUE(UpstreamEngine({vosk(server)}, quick()).mayBePlain(""));
    EXPECT_FALSE(UpstreamEngine({vosk(server)}, quick()).mayBePlain("ru"));
    EXPECT_TRUE(UpstreamEngine({vosk(server), wyoming(other)}, quick()).mayBePlain("en"));
    EXPECT_FALSE(UpstreamEngine({wyoming(other)}, quick()).mayBePlain("en"));
}

TEST(Vosk, EachSegmentSaysWhetherItWasWrittenByWhoeverHeardIt) {
    const ScriptedVosk server(std::vector<std::string>(4, R"({"text":"hello there"})"));
    const ScriptedWyoming broken("");
    for (const auto& [language, plain] : {std::pair("en", true), std::pair("ru", false)}) {
        UpstreamEngine engine({wyoming(broken), vosk(server)}, quick());
        const auto outcome = recognise(engine, tone(1, 0.3), language);
        EXPECT_EQ(outcome.segments, std::vector<std::string>{"hello there hello there"});
        EXPECT_EQ(outcome.plain, plain) << language;
    }
    const ScriptedWyoming writes(wyomingEvent("transcript", R"({"text":"Hello."})"));
    UpstreamEngine engine({wyoming(writes), vosk(server)}, quick());
    EXPECT_FALSE(recognise(engine, tone(1, 0.3), "en").plain);
}

TEST(Vosk, ABrokenServerLeavesTheTakeToTheNext) {
    const std::vector<std::vector<std::string>> broken = {
        {"no json", "no json"}, {"[]", "[]"}, {}, {R"({"partial":""})"}, {std::string(2 << 20, 'x'), "{}"}};
    for (const auto& answers : broken) {
        const ScriptedVosk first(answers);
        const ScriptedVosk second({R"({"partial":""})", R"({"text":"second"})"});
        UpstreamEngine engine({vosk(first), vosk(second)}, quick());
        EXPECT_EQ(recognise(engine, tone(1, 0.3)).segments, std::vector<std::string>{"second"});
    }
}

TEST(Vosk, ATranscriptWithoutEndLeavesTheTakeToTheNext) {
    const ScriptedVosk first(std::vector<std::string>(4, R"({"text":")" + std::string(500'000, 'x') + "\"}"));
    const ScriptedVosk second(std::vector<std::string>(4, R"({"text":"second"})"));
    UpstreamEngine engine({vosk(first), vosk(second)}, quick());
    const auto outcome = recognise(engine, tone(3, 0.3), "ru");
    EXPECT_EQ(outcome.segments, std::vector<std::string>{"second second second second"});
}

TEST(Vosk, AServerOfAnotherProtocolIsNoVosk) {
    const ScriptedWyoming other("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}");
    const SpeechUpstream wrong{findSpeechProfile("vosk"), "ws://127.0.0.1:" + std::to_string(other.port()),
                               "", ""};
    EXPECT_EQ(heard(wrong), "failed");
}
