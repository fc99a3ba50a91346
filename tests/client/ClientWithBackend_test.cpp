// SPDX-License-Identifier: GPL-3.0-or-later
// Only the speech and language servers behind the backend are scripted.
#include "RealBackend.h"

#include "api/MacAPI.h"
#include "api/test/ApiFixture.h"
#include "platform/linux/desktop/QtClock.h"
#include "platform/linux/desktop/QtHttpClient.h"
#include "support/ScriptedBackend.h"
#include "support/Wait.h"

#include <QtEndian>

#include <cmath>

namespace lorvane {

namespace {

constexpr const char* speechPath = "/v1/audio/transcriptions";
constexpr const char* chatPath = "/v1/chat/completions";

QByteArray littleEndian(quint32 value, int bytes) {
    const quint32 turned = qToLittleEndian(value);
    return {reinterpret_cast<const char*>(&turned), bytes};
}

QByteArray wavOf(double seconds, double loudness) {
    QByteArray samples;
    for (int at = 0; at < static_cast<int>(seconds * 16'000); ++at) {
        const double value = loudness * 32'000 * std::sin(at * 0.17);
        samples += littleEndian(static_cast<quint32>(static_cast<qint32>(value)), 2);
    }
    const auto size = static_cast<quint32>(samples.size());
    return "RIFF" + littleEndian(36 + size, 4) + "WAVEfmt " + littleEndian(16, 4) + littleEndian(1, 2) +
           littleEndian(1, 2) + littleEndian(16'000, 4) + littleEndian(32'000, 4) + littleEndian(2, 2) +
           littleEndian(16, 2) + "data" + littleEndian(size, 4) + samples;
}

ScriptedReply chatAnswer(const QList<QByteArray>& tokens) {
    ScriptedReply reply;
    reply.headers = {{"Content-Type", "text/event-stream"}};
    for (const QByteArray& token : tokens) {
        reply.pieces.push_back("data: {\"choices\":[{\"delta\":{\"content\":\"" + token + "\"}}]}\n\n");
    }
    reply.pieces.push_back(
        "data: {\"choices\":[{\"delta\":{},\"finish_reason\":\"stop\"}]}\n\ndata: [DONE]\n\n");
    return reply;
}

class ClientWithBackend : public ::testing::Test {
 protected:
    void SetUp() override { hears("Hello there."); }
    void hears(const QByteArray& text) {
        speech.scriptAnew(speechPath, ScriptedReply::body(R"({"text":")" + text + R"("})"));
    }
    void start(const QStringList& options = {}) {
        const auto server = [](const ScriptedBackend& upstream) {
            return "openai " + upstream.url().toString() + " model=a";
        };
        QStringList all{"--speech", server(speech)};
        if (withLanguage) {
            all += {"--language", server(language)};
        }
        backend = std::make_unique<RealBackend>(all + options);
        ASSERT_FALSE(backend->url().isEmpty()) << backend->log().toStdString();
        api.setBackendURL(backend->url());
    }
    DictationRequest take(const QString& id, const QByteArray& sound = wavOf(1, 0.3)) {
        DictationRequest request;
        request.audio = sound;
        request.ext = "wav";
        request.takeID = id;
        return request;
    }
    DictationResult stream(DictationRequest request) {
        deltas.clear();
        Running<DictationResult> call([this, request](TaskScope scope) {
            return api.dictateStream(
                request, [this](QString text) { return note(std::move(text)); }, scope);
        });
        EXPECT_TRUE(waitUntil([&] { return call.isDone(); })) << backend->log().toStdString();
        return call.value();
    }
    DictationResult dictate(DictationRequest request) {
        Running<DictationResult> call(
            [this, request](TaskScope scope) { return api.dictate(request, scope); });
        EXPECT_TRUE(waitUntil([&] { return call.isDone(); })) << backend->log().toStdString();
        return call.value();
    }
    std::optional<QString> part(const QByteArray& sound) {
        Running<std::optional<QString>> call(
            [this, sound](TaskScope scope) { return api.transcribePart(sound, "wav", {}, scope); });
        EXPECT_TRUE(waitUntil([&] { return call.isDone(); })) << backend->log().toStdString();
        return call.value();
    }
    QCoro::Task<void> note(QString text) {
        deltas.append(text);
        co_return;
    }
    static std::optional<Failure::Kind> failure(const DictationResult& result) {
        if (result || !std::holds_alternative<Failure>(result.error())) {
            return std::nullopt;
        }
        return std::get<Failure>(result.error()).kind;
    }

    TestFoundation foundation;
    QtClock clock;
    ScriptedBackend speech;
    ScriptedBackend language;
    bool withLanguage = false;
    std::unique_ptr<RealBackend> backend;
    QtHttpClient http{clock};
    FakeSecretStore secrets;
    NoIdentityCloud cloud;
    MacAPI api{http, secrets, foundation.preferences, cloud};
    QStringList deltas;
};

TEST_F(ClientWithBackend, RegistersItselfAndTheDeltasOfATakeConcatenateToItsText) {
    start();
    const auto result = stream(take("A"));
    ASSERT_TRUE(result.has_value()) << backend->log().toStdString();
    EXPECT_EQ(result->text, "Hello there.");
    EXPECT_EQ(result->raw, "Hello there.");
    EXPECT_EQ(deltas.join(QString()), result->text);
    EXPECT_FALSE(foundation.preferences.get(preference::token).isEmpty());
}

TEST_F(ClientWithBackend, TheOneShotRequestAfterAStreamCostsNoSecondRecognition) {
    start();
    ASSERT_TRUE(stream(take("A")).has_value());
    const auto again = dictate(take("A"));
    ASSERT_TRUE(again.has_value());
    EXPECT_EQ(again->text, "Hello there.");
    EXPECT_EQ(speech.requests(speechPath).size(), 1U);
    ASSERT_TRUE(dictate(take("B")).has_value());
    EXPECT_EQ(speech.requests(speechPath).size(), 2U);
}

TEST_F(ClientWithBackend, APartIsItsWordsAloneAndSilenceIsNone) {
    start();
    ASSERT_TRUE(stream(take("A")).has_value()) << "which registers";
    EXPECT_EQ(part(wavOf(1, 0.3)), std::optional<QString>("Hello there."));
    EXPECT_EQ(part(wavOf(1, 0)), std::optional<QString>(QString()));
}

TEST_F(ClientWithBackend, TheWordsOfEarlierPartsStandBeforeThoseOfTheRest) {
    start();
    auto request = take("A");
    request.prefix = "Good morning.";
    const auto result = stream(request);
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(result->text, "Good morning. Hello there.");
    EXPECT_EQ(deltas.join(QString()), result->text);
}

TEST_F(ClientWithBackend, SilenceIsNoSpeech) {
    start();
    EXPECT_EQ(failure(stream(take("A", wavOf(1, 0)))), Failure::Kind::noSpeech);
    EXPECT_EQ(failure(dictate(take("B", wavOf(1, 0)))), Failure::Kind::noSpeech);
}

TEST_F(ClientWithBackend, WhatIsNoSoundIsTheServersFailure) {
    start();
    EXPECT_EQ(failure(dictate(take("A", "no sound"))), Failure::Kind::server);
}

TEST_F(ClientWithBackend, MoreTakesThanAnHourHasAreTooMany) {
    start({"--takes-per-hour", "1"});
    ASSERT_TRUE(stream(take("A")).has_value());
    ASSERT_TRUE(dictate(take("A")).has_value()) << "the same take is no second one";
    EXPECT_EQ(failure(stream(take("B"))), Failure::Kind::tooManyRequests);
    EXPECT_EQ(failure(dictate(take("C"))), Failure::Kind::tooManyRequests);
}

TEST_F(ClientWithBackend, ATakeOverTheLimitIsTooLong) {
    start({"--audio-limit", "1"});
    EXPECT_EQ(failure(stream(take("A", wavOf(61, 0.3)))), Failure::Kind::tooLong);
}

TEST_F(ClientWithBackend, ATokenThatTheBackendDoesNotKnowIsReplaced) {
    foundation.preferences.set(preference::token, QString("of another database"));
    start();
    ASSERT_TRUE(stream(take("A")).has_value());
    EXPECT_NE(foundation.preferences.get(preference::token), "of another database");
}

TEST_F(ClientWithBackend, WhatTheLanguageServerWritesComesAsItIsWritten) {
    withLanguage = true;
    hears("um hello there how are you");
    language.script(chatPath, chatAnswer({"Hello there,", " how", " are you?"}));
    start();
    const auto result = stream(take("A"));
    ASSERT_TRUE(result.has_value()) << backend->log().toStdString();
    EXPECT_EQ(result->text, "Hello there, how are you?");
    EXPECT_EQ(result->raw, "um hello there how are you");
    EXPECT_EQ(deltas.join(QString()), result->text);
}

TEST_F(ClientWithBackend, WithoutTheLanguageServerTheWordsThatWereSaidAreDelivered) {
    withLanguage = true;
    language.script(chatPath, ScriptedReply::body("{}", 500));
    start();
    const auto result = stream(take("A"));
    ASSERT_TRUE(result.has_value()) << backend->log().toStdString();
    EXPECT_EQ(result->text, "Hello there.");
}

TEST_F(ClientWithBackend, ABackendKilledInMidTakeIsAFailureOfTheConnection) {
    ScriptedReply silent;
    silent.neverAnswers = true;
    speech.scriptAnew(speechPath, silent);
    start();
    Running<DictationResult> call([this](TaskScope scope) {
        return api.dictateStream(
            take("A"), [this](QString text) { return note(std::move(text)); }, scope);
    });
    ASSERT_TRUE(waitUntil([&] { return !speech.requests(speechPath).empty(); }));
    backend->kill();
    ASSERT_TRUE(waitUntil([&] { return call.isDone(); }));
    EXPECT_TRUE(isTransport(call.value()));
}

} // namespace

} // namespace lorvane
