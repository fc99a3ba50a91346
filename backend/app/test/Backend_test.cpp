// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Backend.h"
#include "testing/BackendUnderTest.h"
#include "testing/ScriptedEngine.h"
#include "testing/ServerUnderTest.h"
#include "testing/Sound.h"
#include "util/Base64.h"

#include <gtest/gtest.h>
#include <numeric>
#include <random>

using namespace lorvane::backend;
using namespace lorvane::backend::testing;
using namespace std::chrono_literals;

namespace {

const std::string& sound() {
    static const auto file = wavFile(tone(1.0, 0.3));
    return file;
}

} // namespace

class BackendTest : public ::testing::Test {
 protected:
    ScriptedEngine::Record record_;
    BackendUnderTest backend_{std::make_unique<ScriptedEngine>(
        std::vector<std::string>{"i'll come on monday comma", "um perhaps question", "mark"}, record_)};
    std::uint16_t port_ = backend_.port();
    std::string token_ = backend_.registerDevice();
    static constexpr const char* text_ = "I'll come on Monday, perhaps?";
    static constexpr const char* raw_ = "i'll come on monday comma um perhaps question mark";
};

class SilentBackendTest : public ::testing::Test {
 protected:
    ScriptedEngine::Record record_;
    BackendUnderTest backend_{std::make_unique<ScriptedEngine>(std::vector<std::string>{}, record_)};
    std::uint16_t port_ = backend_.port();
    std::string token_ = backend_.registerDevice();
};

TEST_F(BackendTest, HealthNeedsNoToken) {
    const auto reply = request(port_, {"GET", "/healthz", "", "", "", "", ""});
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(member(reply.body, "status"), "ok");
}

TEST_F(BackendTest, EveryRegistrationGivesANewTokenAndAllOfThemWork) {
    const auto second = backend_.registerDevice();
    ASSERT_EQ(token_.size(), 64U);
    ASSERT_EQ(second.size(), 64U);
    EXPECT_NE(token_, second);
    for (const auto& token : {token_, second})
        EXPECT_EQ(request(port_, backend_.take("dictate", token, sound())).status, 200);
}

TEST_F(BackendTest, AMalformedRegistrationIsRefused) {
    for (const char* body : {"", "x", "{}", R"({"device":1})", R"({"device":"abc"})"}) {
        const auto reply = request(port_, {"POST", "/api/register", "", "application/json", "", "", body});
        EXPECT_EQ(reply.status, 400) << body;
    }
}

TEST_F(BackendTest, ATakeGivesItsTextAndItsTranscript) {
    const auto reply = request(port_, backend_.take("dictate", token_, sound()));
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(member(reply.body, "text"), text_);
    EXPECT_EQ(member(reply.body, "raw"), raw_);
    EXPECT_EQ(reply.body.find("original"), std::string::npos);
}

TEST_F(BackendTest, AStreamedTakeIsItsDeltas) {
    const auto reply = request(port_, backend_.take("dictate-stream", token_, sound()));
    EXPECT_EQ(reply.status, 200);
    const auto stream = readStream(reply.body);
    EXPECT_EQ(stream.deltas, (std::vector<std::string>{"I'll come on Monday,", " perhaps", "?"}));
    EXPECT_EQ(std::accumulate(stream.deltas.begin(), stream.deltas.end(), std::string()), stream.done);
    EXPECT_EQ(stream.done, text_);
    EXPECT_EQ(stream.raw, raw_);
}

TEST_F(BackendTest, APartGivesItsWordsAlone) {
    const auto reply = request(port_, backend_.take("transcribe-part", token_, sound(), "",
                                                    R"({"ext":"wav","context":"what came before"})"));
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(member(reply.body, "text"), raw_);
    EXPECT_EQ(record_.lastContext, "what came before");
}

TEST_F(BackendTest, TheJsonFormGivesTheSame) {
    auto call = backend_.take("dictate", token_, "");
    call.contentType = "application/json";
    call.body = R"({"ext":"wav","audio":")" + encodeBase64(sound()) + "\"}";
    const auto reply = request(port_, call);
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(member(reply.body, "text"), text_);
}

TEST_F(BackendTest, APrefixStandsBeforeTheTakeAndIsCleanedWithIt) {
    const auto reply = request(port_, backend_.take("dictate-stream", token_, sound(), "",
                                                    R"({"ext":"wav","prefix":"um well tell her"})"));
    const auto stream = readStream(reply.body);
    EXPECT_EQ(stream.done, "Well tell her I'll come on Monday, perhaps?");
    EXPECT_EQ(stream.raw, std::string("um well tell her ") + raw_);
    EXPECT_EQ(std::accumulate(stream.deltas.begin(), stream.deltas.end(), std::string()), stream.done);
}

TEST_F(BackendTest, APrefixWithoutAnyAudioIsStillCleaned) {
    const auto reply =
        request(port_, backend_.take("dictate", token_, "", "", R"({"ext":"wav","prefix":"well tell her"})"));
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(member(reply.body, "text"), "Well tell her.");
    EXPECT_EQ(record_.runs, 0);
}

TEST_F(BackendTest, ATranslationIsNotMadeAndTheTextIsDeliveredAsSpoken) {
    const auto reply =
        request(port_, backend_.take("dictate", token_, sound(), "", R"({"ext":"wav","translate":"de"})"));
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(member(reply.body, "text"), text_);
    EXPECT_EQ(reply.body.find("original"), std::string::npos);
}

TEST_F(BackendTest, ALanguageThatTheEngineDoesNotSpeakIsRefused) {
    for (const char* endpoint : {"dictate", "dictate-stream", "transcribe-part"}) {
        const auto reply =
            request(port_, backend_.take(endpoint, token_, sound(), "", R"({"ext":"wav","lang":"ru"})"));
        EXPECT_EQ(reply.status, 501) << endpoint;
        EXPECT_EQ(member(reply.body, "error"), "language_unavailable");
    }
}

TEST_F(BackendTest, TheOneShotAfterAStreamRecognisesNothingAgain) {
    ASSERT_EQ(request(port_, backend_.take("dictate-stream", token_, sound(), "take-1")).status, 200);
    const auto reply = request(port_, backend_.take("dictate", token_, sound(), "take-1"));
    EXPECT_EQ(member(reply.body, "text"), text_);
    EXPECT_EQ(member(reply.body, "raw"), raw_);
    EXPECT_EQ(record_.runs, 1);
}

TEST_F(BackendTest, AnotherDeviceOrOtherAudioGetsNothingOfATake) {
    ASSERT_EQ(request(port_, backend_.take("dictate", token_, sound(), "take-1")).status, 200);
    const auto other = backend_.registerDevice(deviceTwo);
    ASSERT_EQ(request(port_, backend_.take("dictate", other, sound(), "take-1")).status, 200);
    EXPECT_EQ(record_.runs, 2);
    const auto audio = wavFile(tone(0.5, 0.3));
    ASSERT_EQ(request(port_, backend_.take("dictate", token_, audio, "take-1")).status, 200);
    EXPECT_EQ(record_.runs, 3);
}

// The stream breaks after its first segment; the one-shot upload goes on where the stream ended.
TEST_F(BackendTest, ABrokenStreamStopsAndTheFallbackGoesOnFromThere) {
    std::atomic<bool> waiting = false;
    std::atomic<bool> first = true;
    record_.beforeSegment = [&](std::size_t index, const std::stop_token& stop) {
        if (index != 1 || !first.exchange(false))
            return;
        waiting = true;
        eventually([&] { return stop.stop_requested(); });
    };
    {
        Connection connection(port_);
        connection.send(requestText(backend_.take("dictate-stream", token_, sound(), "take-1")));
        ASSERT_EQ(connection.readHead().status, 200);
        EXPECT_EQ(connection.readLine(), R"({"type":"delta","text":"I'll come on Monday,"})");
        ASSERT_TRUE(eventually([&] { return waiting.load(); }));
    }
    const auto reply = request(port_, backend_.take("dictate", token_, sound(), "take-1"));
    EXPECT_EQ(member(reply.body, "text"), text_);
    EXPECT_EQ(record_.stopped, 1);
    EXPECT_EQ(record_.segments, 3) << "each segment once";
}

TEST_F(BackendTest, WhatIsKnownOfATakeStandsBeforeItsRest) {
    std::atomic<bool> first = true;
    record_.beforeSegment = [&](std::size_t index, const std::stop_token&) {
        if (index == 1 && first.exchange(false))
            throw std::runtime_error("on purpose");
    };
    const std::string fields = R"({"ext":"wav","prefix":"well"})";
    request(port_, backend_.take("dictate-stream", token_, sound(), "take-1", fields));
    EXPECT_EQ(record_.lastContext, "well");
    request(port_, backend_.take("dictate", token_, sound(), "take-1", fields));
    EXPECT_EQ(record_.lastContext, "well i'll come on monday comma");
}

TEST_F(BackendTest, PlainSegmentsAmongSentencesAreCleanedAndSentencesStayAsTheyAre) {
    record_.written = {1};
    const auto stream =
        readStream(request(port_, backend_.take("dictate-stream", token_, sound(), "",
                                                R"({"ext":"wav","prefix":"Well, um.","style":"lowercase"})"))
                       .body);
    EXPECT_EQ(stream.done, "Well, um. i'll come on monday, um perhaps question mark");
    EXPECT_EQ(std::accumulate(stream.deltas.begin(), stream.deltas.end(), std::string()), stream.done);
    EXPECT_EQ(stream.raw, std::string("Well, um. ") + raw_);
}

TEST_F(BackendTest, WhatTheEngineLearntComesBackForTheDeviceAlone) {
    request(port_, backend_.take("dictate", token_, sound()));
    EXPECT_EQ(record_.lastAdaptation, "");
    request(port_, backend_.take("dictate", token_, sound()));
    EXPECT_EQ(record_.lastAdaptation, "learnt");
    request(port_, backend_.take("dictate", backend_.registerDevice(deviceTwo), sound()));
    EXPECT_EQ(record_.lastAdaptation, "");
}

TEST_F(BackendTest, AnEngineThatFailsIsAServerError) {
    record_.beforeSegment = [](std::size_t index, const std::stop_token&) {
        if (index == 1)
            throw std::runtime_error("on purpose");
    };
    EXPECT_EQ(request(port_, backend_.take("dictate", token_, sound())).status, 500);
    const auto stream = readStream(request(port_, backend_.take("dictate-stream", token_, sound())).body);
    EXPECT_EQ(stream.deltas.size(), 1U);
    EXPECT_EQ(stream.error, "server");
}

TEST_F(BackendTest, MalformedTakesAreRefusedAtEveryDoor) {
    const std::string length4GiB(4, '\xff');
    const std::pair<std::string, std::string> bodies[] = {
        {"application/vnd.tirra.take", ""},
        {"application/vnd.tirra.take", "abc"},
        {"application/vnd.tirra.take", length4GiB},
        {"application/vnd.tirra.take", length4GiB + std::string(1000, 'x')},
        {"application/vnd.tirra.take", std::string("\0\0\0\x05nope!", 9) + sound()},
        {"application/vnd.tirra.take", framedTake(R"({"ext":"wav"})", "this is no audio at all")},
        {"application/vnd.tirra.take", framedTake(R"({"ext":"m4a"})", std::string(50'000, '\x7f'))},
        {"application/json", "{"},
        {"application/json", R"({"ext":"wav","audio":"%%%"})"},
        {"text/plain", "hello"},
    };
    for (const char* endpoint : {"dictate", "dictate-stream", "transcribe-part"})
        for (const auto& [type, body] : bodies) {
            auto call = backend_.take(endpoint, token_, "");
            call.contentType = type;
            call.body = body;
            EXPECT_EQ(request(port_, call).status, 400)
                << endpoint << ' ' << type << ' ' << body.substr(0, 30);
        }
    EXPECT_EQ(record_.runs, 0);
}

TEST_F(BackendTest, UnknownTokensAreRefusedAtEveryDoor) {
    for (const char* endpoint : {"dictate", "dictate-stream", "transcribe-part"})
        for (const std::string& token : {std::string(), std::string(64, '0'), token_.substr(1), token_ + "0"})
            EXPECT_EQ(request(port_, backend_.take(endpoint, token, sound())).status, 401) << endpoint;
}

TEST_F(BackendTest, RandomTakesDoNoHarm) {
    std::mt19937 random(9);
    const auto good = framedTake(R"({"ext":"wav","prefix":"so"})", sound().substr(0, 4000));
    std::map<int, int> statuses;
    Connection connection(port_);
    for (int round = 0; round < 1000; ++round) {
        auto call = backend_.take(round % 2 ? "dictate" : "dictate-stream", token_, "");
        call.body = good;
        for (auto k = random() % 8; k > 0; --k)
            call.body[random() % (round % 3 ? 80 : call.body.size())] = static_cast<char>(random());
        if (round % 4 == 0)
            call.body.resize(random() % call.body.size());
        ++statuses[request(connection, call).status];
    }
    EXPECT_EQ(statuses[200] + statuses[400] + statuses[422] + statuses[413], 1000);
    EXPECT_GT(statuses[200], 50);
    EXPECT_GT(statuses[400], 50);
}

TEST_F(SilentBackendTest, NoSpeechIsAStatusOrALine) {
    for (const std::string& audio : {sound(), std::string(), wavFile({})}) {
        const auto reply = request(port_, backend_.take("dictate", token_, audio));
        EXPECT_EQ(reply.status, 422);
        EXPECT_EQ(member(reply.body, "error"), "no_speech");
        const auto stream = request(port_, backend_.take("dictate-stream", token_, audio));
        EXPECT_EQ(stream.status, 200);
        EXPECT_EQ(stream.body, "{\"type\":\"error\",\"error\":\"no_speech\"}\n");
        const auto part = request(port_, backend_.take("transcribe-part", token_, audio));
        EXPECT_EQ(part.status, 200);
        EXPECT_EQ(part.body, R"({"text":""})");
    }
}

TEST(BackendLimits, TheSoundOfAllTakesHasOneBoundAndIsGivenBackHoweverATakeEnds) {
    std::atomic<bool> waiting = false;
    std::atomic<bool> goOn = false;
    ScriptedEngine::Record record;
    record.beforeSegment = [&](std::size_t, const std::stop_token& stop) {
        waiting = true;
        eventually([&] { return goOn || stop.stop_requested(); });
    };
    BackendOptions options;
    options.takeBytes = 1 << 20;
    options.maxAudioSeconds = 25;
    BackendUnderTest backend(std::make_unique<ScriptedEngine>(std::vector<std::string>{"yes"}, record),
                             options);
    const auto token = backend.registerDevice();
    const auto port = backend.port();
    const auto longTake = wavFile(tone(20, 0.1));
    const auto heldBytes = [&] {
        const auto text = backend.get("/metrics").body;
        return std::stol(text.substr(text.find("\nlorvane_take_bytes ") + 20));
    };
    Connection first(port);
    first.send(requestText(backend.take("dictate-stream", token, longTake)));
    ASSERT_TRUE(eventually([&] { return waiting.load(); }));
    EXPECT_EQ(heldBytes(), 1 << 20);
    for (const char* endpoint : {"dictate", "dictate-stream", "transcribe-part"}) {
        const auto refused = request(port, backend.take(endpoint, token, sound()));
        EXPECT_EQ(refused.status, 503) << endpoint;
        EXPECT_EQ(member(refused.body, "error"), "busy");
        EXPECT_EQ(refused.headers.count("retry-after"), 1U);
    }
    auto json = backend.take("dictate", token, "");
    json.contentType = "application/json";
    json.body = R"({"ext":"wav","audio":")" + encodeBase64(sound()) + "\"}";
    EXPECT_EQ(request(port, json).status, 503) << "its reading takes memory, too";
    first.close();
    EXPECT_TRUE(eventually([&] { return heldBytes() == 0; })) << "the client has left";
    goOn = true;
    EXPECT_EQ(request(port, json).status, 200);
    EXPECT_EQ(request(port, backend.take("dictate", token, longTake)).status, 200);
    EXPECT_EQ(request(port, backend.take("dictate", token, wavFile(tone(26, 0.1)))).status, 413);
    EXPECT_EQ(request(port, backend.take("dictate", token, "no sound")).status, 400);
    EXPECT_EQ(request(port, backend.take("transcribe-part", token, longTake)).status, 200);
    record.beforeSegment = [](std::size_t, const std::stop_token&) {
        throw std::runtime_error("on purpose");
    };
    EXPECT_EQ(request(port, backend.take("dictate", token, longTake)).status, 500);
    EXPECT_TRUE(eventually([&] { return heldBytes() == 0; }));
}

TEST(BackendLimits, ALargeBodyAndALongTakeAreTooLarge) {
    ScriptedEngine::Record record;
    BackendOptions options;
    options.service.takeLimit = 1 << 20;
    options.maxAudioSeconds = 10;
    BackendUnderTest backend(std::make_unique<ScriptedEngine>(std::vector<std::string>{"yes"}, record),
                             options);
    const auto token = backend.registerDevice();
    const auto port = backend.port();
    for (const char* endpoint : {"dictate", "dictate-stream", "transcribe-part"}) {
        EXPECT_EQ(request(port, backend.take(endpoint, token, std::string(1 << 20, 'x'))).status, 413)
            << endpoint;
        EXPECT_EQ(request(port, backend.take(endpoint, token, wavFile(tone(10.1, 0.1)))).status, 413)
            << endpoint;
        EXPECT_EQ(request(port, backend.take(endpoint, token, wavFile(tone(9.9, 0.1)))).status, 200)
            << endpoint;
    }
}
