// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/MacAPI.h"
#include "api/test/ApiFixture.h"
#include "platform/linux/desktop/QtClock.h"
#include "platform/linux/desktop/QtHttpClient.h"
#include "support/ScriptedBackend.h"
#include "support/Wait.h"

using namespace lorvane;

namespace {

/// The client against a real server.
class MacAPIOverSockets : public ::testing::Test {
 protected:
    MacAPIOverSockets() {
        api.setBackendURL(server.url());
        server.script("/api/register", ScriptedReply::body(R"({"token":"new"})"));
    }
    DictationResult stream() {
        Running<DictationResult> call([this](TaskScope scope) {
            return api.dictateStream(
                {QByteArray(50'000, 'a'), "m4a", {}, QString("TAKE"), {}, true},
                [this](QString text) { return note(std::move(text)); }, scope);
        });
        EXPECT_TRUE(waitUntil([&] { return call.isDone(); }));
        return call.value();
    }
    QCoro::Task<void> note(QString text) {
        deltas.append(text);
        co_return;
    }

    TestFoundation foundation;
    QtClock clock;
    ScriptedBackend server;
    QtHttpClient http{clock};
    FakeSecretStore secrets;
    NoIdentityCloud cloud;
    MacAPI api{http, secrets, foundation.preferences, cloud};
    QStringList deltas;
};

TEST_F(MacAPIOverSockets, RegistersAndStreamsATake) {
    ScriptedReply reply =
        ScriptedReply::lines({R"({"type":"delta","text":"Good "})", "", R"({"type":"delta","text":"day."})",
                              R"({"type":"done","text":"Good day. ","raw":"good day"})"});
    reply.betweenPieces = std::chrono::milliseconds(20);
    server.script("/api/dictate-stream", reply);
    const DictationResponse expected{"Good day.", "good day", {}, {}, {}};
    EXPECT_EQ(stream(), expected);
    EXPECT_EQ(deltas, (QStringList{"Good ", "day."}));
    const auto requests = server.requests("/api/dictate-stream");
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0].headers.at("authorization"), "Bearer new");
    EXPECT_EQ(requests[0].headers.at("x-tirra-take"), "TAKE");
    EXPECT_EQ(requests[0].body, QByteArray("\0\0\0\x0d", 4) + R"({"ext":"m4a"})" + QByteArray(50'000, 'a'));
}

TEST_F(MacAPIOverSockets, ARejectedTokenIsReplaced) {
    foundation.preferences.set(preference::token, QString("old"));
    server.script("/api/dictate-stream", ScriptedReply::body(R"({"error":"unauthorized"})", 401));
    server.script("/api/dictate-stream", ScriptedReply::lines({R"({"type":"done","text":"x"})"}));
    EXPECT_TRUE(stream().has_value());
    const auto requests = server.requests("/api/dictate-stream");
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(requests[0].headers.at("authorization"), "Bearer old");
    EXPECT_EQ(requests[1].headers.at("authorization"), "Bearer new");
}

TEST_F(MacAPIOverSockets, AStreamThatDropsMidwayKeepsItsFragments) {
    ScriptedReply reply =
        ScriptedReply::lines({R"({"type":"delta","text":"one"})", R"({"type":"delta","text":"two"})",
                              R"({"type":"done","text":"one two"})"});
    reply.dropAfter = 70;
    server.script("/api/dictate-stream", reply);
    EXPECT_TRUE(isTransport(stream()));
    EXPECT_EQ(deltas, (QStringList{"one", "two"}));
}

TEST_F(MacAPIOverSockets, ABackendThatIsNotThereIsOffline) {
    {
        const ScriptedBackend gone;
        api.setBackendURL(gone.url());
    }
    const DictationError expected = Failure{Failure::Kind::noToken, RegistrationFailure::offline};
    EXPECT_EQ(stream().error(), expected);
}

TEST_F(MacAPIOverSockets, TheRestAfterDoneIsLeftAndTheConnectionClosed) {
    ScriptedReply reply = ScriptedReply::lines({R"({"type":"done","text":"x"})"});
    reply.more = []() -> std::optional<QByteArray> { return QByteArray("{}\n"); };
    reply.betweenPieces = std::chrono::milliseconds(1);
    server.script("/api/dictate-stream", reply);
    EXPECT_TRUE(stream().has_value());
    EXPECT_TRUE(waitUntil([&] { return server.lastClosedByClient().has_value(); }));
}

} // namespace
