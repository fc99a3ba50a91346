// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/test/ApiFixture.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

using namespace lorvane;

namespace {

class Registration : public ApiFixture {
 protected:
    const std::pair<QString, QString> item{"com.ostrand.tirra.mac.device", "install-id"};

    std::optional<RegistrationFailure> outcomeOf(FakeReply reply) {
        answer(registerPath, std::move(reply));
        registerNow();
        return api.lastRegistrationFailure();
    }
};

TEST_F(Registration, KeyStoreWinsOverADifferingPreference) {
    secrets.secrets[item] = "KEPT";
    preferences.set(preference::device, QString("OTHER"));
    EXPECT_EQ(deviceID(), "KEPT");
    EXPECT_EQ(preferences.get(preference::device), "KEPT");
    EXPECT_EQ(secrets.secrets[item], "KEPT");
    EXPECT_EQ(secrets.writes, 0);
}

TEST_F(Registration, KeyStoreRestoresAWipedPreference) {
    secrets.secrets[item] = "KEPT";
    EXPECT_EQ(deviceID(), "KEPT");
    EXPECT_EQ(preferences.stored(preference::device), "KEPT");
}

TEST_F(Registration, PreferenceRestoresALostKeyStoreItem) {
    preferences.set(preference::device, QString("COPY"));
    EXPECT_EQ(deviceID(), "COPY");
    EXPECT_EQ(secrets.secrets[item], "COPY");
}

TEST_F(Registration, WithBothAbsentOneNewIdentifierIsWrittenToBothAndStays) {
    const QString first = deviceID();
    EXPECT_TRUE(QRegularExpression("^[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}$").match(first).hasMatch())
        << first.toStdString();
    EXPECT_EQ(secrets.secrets[item], first.toUtf8());
    EXPECT_EQ(preferences.get(preference::device), first);
    EXPECT_EQ(deviceID(), first);
}

TEST_F(Registration, AnItemThatIsEmptyOrNoTextDoesNotCount) {
    preferences.set(preference::device, QString("COPY"));
    secrets.secrets[item] = "";
    EXPECT_EQ(deviceID(), "COPY");
    secrets.secrets[item] = "\xff\xfe";
    EXPECT_EQ(deviceID(), "COPY");
    EXPECT_EQ(secrets.secrets[item], "COPY");
    secrets.secrets[item] = "cut within a letter \xc3";
    EXPECT_EQ(deviceID(), "COPY");
}

TEST_F(Registration, ALockedKeyStoreLeavesTheIdentifierToThePreferences) {
    secrets.locked = true;
    const QString first = deviceID();
    EXPECT_FALSE(first.isEmpty());
    EXPECT_EQ(deviceID(), first);
}

TEST_F(Registration, PostsTheDeviceWithTheHeadersOfTheTable) {
    preferences.set(preference::device, QString("DEVICE"));
    EXPECT_EQ(outcomeOf({.body = R"({"token":"new"})"}), std::nullopt);
    const HttpRequest request = last(registerPath);
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.url, QUrl("http://127.0.0.1:4242/api/register"));
    EXPECT_EQ(request.timeout, seconds(15));
    EXPECT_EQ(header(request, "X-Tirra-Platform"), "mac");
    EXPECT_EQ(header(request, "Content-Type"), "application/json");
    EXPECT_EQ(header(request, "Authorization"), std::nullopt);
    const QJsonObject expected{{"device", "DEVICE"}};
    EXPECT_EQ(QJsonDocument::fromJson(request.body).object(), expected);
    EXPECT_EQ(preferences.get(preference::token), "new");
}

TEST_F(Registration, ATokenThatIsThereEndsItAtOnce) {
    EXPECT_EQ(outcomeOf({.status = 503}), RegistrationFailure::busy);
    holdToken();
    registerNow();
    EXPECT_EQ(count(registerPath), 1U);
    EXPECT_EQ(cloud.restoreTimeouts.size(), 1U);
    EXPECT_EQ(api.lastRegistrationFailure(), RegistrationFailure::busy);
}

TEST_F(Registration, ARestoredTokenNeverTouchesTheNetwork) {
    cloud.record = "from the cloud";
    registerNow();
    EXPECT_EQ(preferences.get(preference::token), "from the cloud");
    EXPECT_EQ(cloud.restoreTimeouts, std::vector<Duration>{seconds(5)});
    EXPECT_TRUE(http.requests.empty());
}

TEST_F(Registration, TheCloudIsLeftAloneWhenItsSyncIsOff) {
    preferences.set(preference::icloudSync, false);
    cloud.record = "from the cloud";
    EXPECT_EQ(outcomeOf({.body = R"({"token":"new"})"}), std::nullopt);
    EXPECT_TRUE(cloud.restoreTimeouts.empty());
    EXPECT_EQ(preferences.get(preference::token), "new");
}

TEST_F(Registration, StatusesAndBodiesMapToTheirFailure) {
    using enum RegistrationFailure;
    const std::vector<std::pair<FakeReply, RegistrationFailure>> table{
        {{.failsWith = TransportError{"no route"}}, offline},
        {{.status = 503, .body = R"({"token":"x"})"}, busy},
        {{.status = 400}, refused},
        {{.status = 429}, refused},
        {{.status = 499}, refused},
        {{.status = 500}, offline},
        {{.status = 204}, offline},
        {{.status = 302}, offline},
        {{.body = "no JSON"}, offline},
        {{.body = R"(["token"])"}, offline},
        {{.body = R"({"other":"x"})"}, offline},
        {{.body = R"({"token":7})"}, offline},
        {{.body = R"({"token":"x","number":7})"}, offline},
        {{.body = R"({"token":"x","none":null})"}, offline},
    };
    for (const auto& [reply, expected] : table) {
        FakeHttpClient client(foundation.clock);
        client.answer(registerPath, reply);
        MacAPI fresh(client, secrets, preferences, cloud);
        fresh.setBackendURL(QUrl("http://127.0.0.1:1"));
        const TaskHandle task = startTask([&fresh](TaskScope scope) { return fresh.registerDevice(scope); });
        EXPECT_EQ(fresh.lastRegistrationFailure(), expected)
            << reply.status << " " << reply.body.toStdString();
        EXPECT_EQ(preferences.stored(preference::token), std::nullopt);
    }
}

TEST_F(Registration, AnEmptyTokenLeavesNoTokenAndNoFailure) {
    answer(registerPath, {.status = 500});
    answer(registerPath, {.body = R"({"token":""})"});
    registerNow();
    EXPECT_EQ(api.lastRegistrationFailure(), RegistrationFailure::offline);
    registerNow();
    EXPECT_EQ(api.lastRegistrationFailure(), std::nullopt);
    EXPECT_EQ(preferences.get(preference::token), "");
    EXPECT_EQ(dictate().value().error(), failed(Failure::Kind::noToken));
}

TEST_F(Registration, AFailureStaysUntilTheNextAttemptThatReachesTheNetwork) {
    answer(registerPath, {.status = 503});
    answer(registerPath, {.body = R"({"token":"new"})"});
    registerNow();
    EXPECT_EQ(api.lastRegistrationFailure(), RegistrationFailure::busy);
    cloud.record = "restored";
    registerNow();
    EXPECT_EQ(api.lastRegistrationFailure(), RegistrationFailure::busy);
    cloud.record.clear();
    preferences.remove(preference::token);
    registerNow();
    EXPECT_EQ(api.lastRegistrationFailure(), std::nullopt);
}

TEST_F(Registration, WithoutAnAddressItIsOffline) {
    api.setBackendURL(QUrl());
    registerNow();
    EXPECT_EQ(api.lastRegistrationFailure(), RegistrationFailure::offline);
    EXPECT_TRUE(http.requests.empty());
}

TEST_F(Registration, TheFifteenSecondsOfTheTableEndIt) {
    answer(registerPath, {.delay = seconds(60)});
    const TaskHandle task = startTask([this](TaskScope scope) { return api.registerDevice(scope); });
    foundation.clock.advance(seconds(14.9));
    EXPECT_TRUE(task.isRunning());
    foundation.clock.advance(seconds(0.1));
    EXPECT_FALSE(task.isRunning());
    EXPECT_EQ(api.lastRegistrationFailure(), RegistrationFailure::offline);
}

} // namespace
