// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ControlService.h"

#include "core/testing/DictationWorld.h"
#include "support/Wait.h"

#include <QDBusMessage>
#include <QDBusServer>
#include <gtest/gtest.h>

#include <chrono>

namespace lorvane {

namespace {

/// A dictation with its control, on a bus that leads nowhere.
class ControlServiceTest : public ::testing::Test {
 protected:
    ControlServiceTest() { world.start(); }

    DictationWorld world;
    QObject object;
    int quits = 0;
    int restarts = 0;
    ControlService* control =
        new ControlService(&object, world.controller, QDBusConnection(QStringLiteral("nowhere")),
                           {[this] { ++quits; }, [this] { ++restarts; }});
};

TEST_F(ControlServiceTest, StartBeginsAHandsFreeTakeAndStopDeliversIt) {
    EXPECT_EQ(control->phaseName(), "idle");
    control->Start();
    EXPECT_EQ(control->phaseName(), "recording");
    world.speak(1);
    control->Stop();
    EXPECT_EQ(control->phaseName(), "processing");
    world.advance(1);
    EXPECT_EQ(control->phaseName(), "done");
    EXPECT_EQ(world.pasted, QStringList{"Hello there."});
    EXPECT_EQ(world.logged("take by hands-free").size(), 1);
}

TEST_F(ControlServiceTest, StartDoesNotEndATake) {
    control->Start();
    world.speak(1);
    control->Start();
    EXPECT_EQ(control->phaseName(), "recording");
}

TEST_F(ControlServiceTest, ToggleStartsAndEndsATake) {
    control->Toggle();
    EXPECT_EQ(control->phaseName(), "recording");
    world.speak(1);
    control->Toggle();
    EXPECT_EQ(control->phaseName(), "processing");
    control->Toggle();
    EXPECT_EQ(control->phaseName(), "processing");
}

TEST_F(ControlServiceTest, CancelThrowsAwayWhateverIsUnderWay) {
    control->Cancel();
    EXPECT_EQ(control->phaseName(), "idle");
    control->Start();
    world.speak(1);
    control->Cancel();
    EXPECT_EQ(control->phaseName(), "idle");
    world.backend.streams.push_back(
        FakeDictationEndpoints::answer(FakeDictationEndpoints::text("Late."), {}, std::chrono::seconds(3)));
    control->Start();
    world.speak(1);
    control->Stop();
    EXPECT_EQ(control->phaseName(), "processing");
    control->Cancel();
    EXPECT_EQ(control->phaseName(), "idle");
    world.advance(5);
    EXPECT_EQ(world.pasted, QStringList());
}

TEST_F(ControlServiceTest, StopAndCancelDoNothingToAMessage) {
    world.status.showNotice(QStringLiteral("Something"), NoticeSeverity::warning);
    control->Stop();
    control->Cancel();
    control->Start();
    EXPECT_EQ(control->phaseName(), "notice");
}

TEST_F(ControlServiceTest, MessageIsToldWithItsSeverity) {
    EXPECT_EQ(control->notice(), "");
    EXPECT_EQ(control->severity(), "");
    world.status.showNotice(QStringLiteral("Something"), NoticeSeverity::warning);
    EXPECT_EQ(control->phaseName(), "notice");
    EXPECT_EQ(control->notice(), "Something");
    EXPECT_EQ(control->severity(), "warning");
    world.status.showNotice(QStringLiteral("Something"), NoticeSeverity::error);
    EXPECT_EQ(control->severity(), "error");
}

TEST_F(ControlServiceTest, PermissionIsThatOfTheDesktop) {
    EXPECT_EQ(control->permissionsGranted(), world.controller.permissionsGranted());
    world.status.permissionsGranted.set(false);
    EXPECT_FALSE(control->permissionsGranted());
    world.status.permissionsGranted.set(true);
    EXPECT_TRUE(control->permissionsGranted());
}

TEST_F(ControlServiceTest, OpenOpensTheWindow) {
    const auto before = world.windows.calls;
    control->Open();
    EXPECT_EQ(world.windows.calls, before + QStringList{"home"});
}

TEST_F(ControlServiceTest, QuitIsAnsweredBeforeTheEnd) {
    control->Quit();
    EXPECT_EQ(quits, 0);
    EXPECT_TRUE(waitUntil([this] { return quits == 1; }));
}

TEST_F(ControlServiceTest, RestartIsAnsweredBeforeTheEnd) {
    control->Restart();
    EXPECT_EQ(restarts, 0);
    EXPECT_TRUE(waitUntil([this] { return restarts == 1; }));
    EXPECT_EQ(quits, 0);
}

class Listener : public QObject {
    Q_OBJECT
 public:
    QStringList phases;
    QList<bool> permissions;
    QString lastNotice;
 public Q_SLOTS: // NOLINT(readability-redundant-access-specifiers)
    void changed(const QString& interface, const QVariantMap& values, const QStringList&) {
        EXPECT_EQ(interface, "com.ostrand.tirra.Dictation1");
        if (values.contains("Phase")) {
            phases.append(values.value("Phase").toString());
            lastNotice = values.value("Notice").toString() + "/" + values.value("Severity").toString();
        }
        if (values.contains("PermissionsGranted")) {
            permissions.append(values.value("PermissionsGranted").toBool());
        }
    }
};

TEST(ControlServiceSignals, EachChangeIsAnnouncedOnTheBus) {
    QDBusServer server(QStringLiteral("unix:tmpdir=/tmp"));
    server.setAnonymousAuthenticationAllowed(true);
    std::optional<QDBusConnection> served;
    QObject::connect(&server, &QDBusServer::newConnection, &server,
                     [&](const QDBusConnection& connection) { served.emplace(connection); });
    QDBusConnection client = QDBusConnection::connectToPeer(server.address(), QStringLiteral("listener"));
    ASSERT_TRUE(waitUntil([&] { return served && client.isConnected(); }));
    Listener listener;
    ASSERT_TRUE(client.connect(
        QString(), QStringLiteral("/com/ostrand/tirra"), QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("PropertiesChanged"), &listener, SLOT(changed(QString, QVariantMap, QStringList))));
    DictationWorld world;
    world.start();
    QObject object;
    new ControlService(&object, world.controller, *served, {[] {}, [] {}});
    world.status.permissionsGranted.set(!world.controller.permissionsGranted());
    world.controller.startDictation(Source::toggle);
    world.status.showNotice(QStringLiteral("Something"), NoticeSeverity::error);
    EXPECT_TRUE(waitUntil([&] { return listener.phases.size() == 2 && listener.permissions.size() == 1; }))
        << listener.phases.join(',').toStdString();
    EXPECT_EQ(listener.phases, (QStringList{"recording", "notice"}));
    EXPECT_EQ(listener.lastNotice, "Something/error");
    QDBusConnection::disconnectFromPeer(QStringLiteral("listener"));
}

} // namespace

} // namespace lorvane

#include "ControlService_test.moc"
