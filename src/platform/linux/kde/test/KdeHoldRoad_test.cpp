// SPDX-License-Identifier: GPL-3.0-or-later
// Against a shortcut service of the test's own on a session bus of the test's own.
#include "platform/linux/kde/KdeHoldRoad.h"

#include "base/PreferenceCatalogue.h"
#include "base/testing/TestFoundation.h"
#include "input/KeyEvents.h"
#include "platform/linux/kde/test/FakeKGlobalAccel.h"
#include "support/Wait.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

using Edges = std::vector<std::pair<int, HoldEdgeKind>>;

const auto control = QStringLiteral("dictate-ctrl");
const auto extra = QStringLiteral("dictate-extra");
const auto cancel = QStringLiteral("cancel");
const auto programName = QStringLiteral("org.example.dictation");
const int controlEscape = escapeWith(keyCode::rightControl);

class KdeHoldRoadTest : public ::testing::Test {
 protected:
    void SetUp() override { ASSERT_TRUE(QDBusConnection::sessionBus().isConnected()); }

    void open() {
        road.emplace(QDBusConnection::sessionBus(), world.foundation, programName,
                     [this] { return areKeysOurs; });
        changes = road->onChange([this] { ++changeCount; });
    }
    void openThere() {
        service.appear();
        open();
        ASSERT_TRUE(waitUntil([this] { return !road->offer().keys.empty(); }));
    }
    void watch(std::vector<int> codes) {
        handle = road->watch(std::move(codes),
                             [this](const HoldEdge& edge) { edges.emplace_back(edge.keyCode, edge.kind); });
    }
    bool has(const QString& action, const QList<int>& keys) {
        return waitUntil([&] { return service.shortcuts().value(action) == keys; });
    }
    bool hasNone() {
        return waitUntil([&] { return service.shortcuts().isEmpty(); });
    }
    [[nodiscard]] bool offers(int code) const {
        const HoldOffer offer = road->offer();
        return std::any_of(offer.keys.begin(), offer.keys.end(),
                           [code](const HoldKeyOffer& key) { return key.keyCode == code; });
    }
    bool told(const Edges& wanted) {
        return waitUntil([&] { return edges.size() >= wanted.size(); }) && edges == wanted;
    }

    FakeKGlobalAccel service;
    TestFoundation world;
    std::optional<KdeHoldRoad> road;
    Edges edges;
    int changeCount = 0;
    bool areKeysOurs = false;
    Handle changes;
    Handle handle;
};

TEST_F(KdeHoldRoadTest, OffersNothingWithoutTheService) {
    open();
    watch({keyCode::rightControl});
    EXPECT_TRUE(road->offer().keys.empty());
    service.appear();
    EXPECT_TRUE(has(control, {Qt::Key_Control})) << "what is watched is taken when the service comes";
    EXPECT_GT(changeCount, 0);
}

TEST_F(KdeHoldRoadTest, LeavesAServiceThatIsNotTheCompositorsAlone) {
    service.appear(false);
    open();
    watch({keyCode::rightControl});
    (void)QDBusConnection::sessionBus().call(QDBusMessage::createMethodCall(
        "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId"));
    EXPECT_TRUE(road->offer().keys.empty());
    EXPECT_TRUE(service.calls.isEmpty());
    service.appear();
    EXPECT_TRUE(waitUntil([this] { return offers(keyCode::rightControl); }));
}

TEST_F(KdeHoldRoadTest, TellsPressAndReleaseOnceEach) {
    openThere();
    watch({keyCode::rightControl, keyCode::fn});
    ASSERT_TRUE(has(control, {Qt::Key_Control}));
    service.tell(control, true);
    service.tell(control, true);
    service.tell(control, false);
    service.tell(control, false);
    service.tell(extra, true);
    EXPECT_TRUE(told({{keyCode::rightControl, HoldEdgeKind::down},
                      {keyCode::rightControl, HoldEdgeKind::up},
                      {keyCode::fn, HoldEdgeKind::down}}));
}

TEST_F(KdeHoldRoadTest, LeavesOutPressesOfTheProgramsOwnMaking) {
    openThere();
    watch({keyCode::rightControl, keyCode::rightShift});
    ASSERT_TRUE(has(QStringLiteral("dictate-shift"), {Qt::Key_Shift}));
    service.tell(control, true);
    ASSERT_TRUE(told({{keyCode::rightControl, HoldEdgeKind::down}}));
    EXPECT_EQ(road->heldModifiers(), modifierFlag::control);
    areKeysOurs = true;
    service.tell(QStringLiteral("dictate-shift"), true);
    service.tell(control, false);
    ASSERT_TRUE(
        told({{keyCode::rightControl, HoldEdgeKind::down}, {keyCode::rightControl, HoldEdgeKind::up}}));
    EXPECT_EQ(road->heldModifiers(), 0U);
}

TEST_F(KdeHoldRoadTest, HearsNothingOfShortcutsThatAreNotItsOwn) {
    openThere();
    watch({keyCode::rightControl});
    ASSERT_TRUE(has(control, {Qt::Key_Control}));
    service.tell(control, true, QStringLiteral("kwin"));
    service.tell(QStringLiteral("other"), true);
    service.tell(cancel, true);
    service.tell(control, true);
    EXPECT_TRUE(told({{keyCode::rightControl, HoldEdgeKind::down}}));
}

TEST_F(KdeHoldRoadTest, LetsGoWhenTheWatchEndsAndAtTheEnd) {
    openThere();
    watch({keyCode::rightControl, keyCode::escape});
    ASSERT_TRUE(has(cancel, {Qt::Key_Escape, controlEscape}));
    watch({keyCode::rightControl});
    EXPECT_TRUE(waitUntil([this] { return !service.shortcuts().contains(cancel); }));
    EXPECT_TRUE(service.shortcuts().contains(control));
    handle.reset();
    EXPECT_TRUE(hasNone());
    watch({keyCode::rightControl});
    ASSERT_TRUE(has(control, {Qt::Key_Control}));
    road.reset();
    EXPECT_TRUE(hasNone());
}

TEST_F(KdeHoldRoadTest, KeepsAPressOverAChangeOfTheWatch) {
    openThere();
    watch({keyCode::rightControl});
    ASSERT_TRUE(has(control, {Qt::Key_Control}));
    service.tell(control, true);
    ASSERT_TRUE(told({{keyCode::rightControl, HoldEdgeKind::down}}));
    const auto registrations = service.calls.count(QStringLiteral("setShortcut"));
    watch({keyCode::rightControl, keyCode::escape});
    ASSERT_TRUE(has(cancel, {Qt::Key_Escape, controlEscape}));
    EXPECT_EQ(service.calls.count(QStringLiteral("setShortcut")), registrations + 1);
    service.tell(control, false);
    EXPECT_TRUE(
        told({{keyCode::rightControl, HoldEdgeKind::down}, {keyCode::rightControl, HoldEdgeKind::up}}));
}

TEST_F(KdeHoldRoadTest, LeavesAShortcutOfTheUsersAlone) {
    service.others = {{Qt::Key_Menu, {"player", "play", "Player", "Play"}}};
    openThere();
    ASSERT_TRUE(offers(keyCode::fn));
    watch({keyCode::rightControl, keyCode::fn});
    ASSERT_TRUE(waitUntil([this] { return !offers(keyCode::fn); }));
    EXPECT_TRUE(offers(keyCode::rightControl));
    EXPECT_TRUE(road->offer().obstacle.contains(QStringLiteral("Menu is a shortcut already: Player: Play.")))
        << qPrintable(road->offer().obstacle);
    EXPECT_FALSE(service.shortcuts().contains(extra));
}

TEST_F(KdeHoldRoadTest, WatchesEscapeAloneWhenTheUserHasItWithTheModifier) {
    service.others = {{controlEscape, {"kwin", "x", "KWin", "X"}}};
    openThere();
    watch({keyCode::rightControl, keyCode::escape});
    ASSERT_TRUE(has(cancel, {Qt::Key_Escape, 0}));
    service.tell(cancel, true);
    EXPECT_TRUE(told({{keyCode::escape, HoldEdgeKind::down}}));
    EXPECT_TRUE(offers(keyCode::escape));
}

TEST_F(KdeHoldRoadTest, TakesABadAnswerForARefusal) {
    for (const auto manner : {FakeKGlobalAccel::Manner::error, FakeKGlobalAccel::Manner::wrongType}) {
        service.manner = FakeKGlobalAccel::Manner::proper;
        openThere();
        service.manner = manner;
        watch({keyCode::rightControl});
        EXPECT_TRUE(waitUntil([this] { return !offers(keyCode::rightControl); }));
        EXPECT_TRUE(offers(keyCode::rightOption));
        handle.reset();
        road.reset();
    }
}

TEST_F(KdeHoldRoadTest, IsInForceOnceTheServiceHasTakenTheShortcut) {
    openThere();
    EXPECT_FALSE(road->isInForce(keyCode::rightControl));
    watch({keyCode::rightControl});
    EXPECT_FALSE(road->isInForce(keyCode::rightControl)) << "nobody has answered yet";
    changeCount = 0;
    ASSERT_TRUE(waitUntil([this] { return road->isInForce(keyCode::rightControl); }));
    EXPECT_EQ(changeCount, 1);
    EXPECT_FALSE(road->isInForce(keyCode::rightShift));
    service.disappear();
    EXPECT_TRUE(waitUntil([this] { return !road->isInForce(keyCode::rightControl); }));
    service.appear();
    EXPECT_TRUE(waitUntil([this] { return road->isInForce(keyCode::rightControl); }));
}

TEST_F(KdeHoldRoadTest, GoesOnWithoutAnAnswer) {
    openThere();
    service.manner = FakeKGlobalAccel::Manner::silent;
    watch({keyCode::rightControl});
    ASSERT_TRUE(waitUntil([this] { return service.calls.contains(QStringLiteral("setShortcut")); }));
    EXPECT_FALSE(road->isInForce(keyCode::rightControl));
    service.tell(control, true);
    EXPECT_TRUE(told({{keyCode::rightControl, HoldEdgeKind::down}}));
    EXPECT_TRUE(road->isInForce(keyCode::rightControl)) << "as its press says";
}

TEST_F(KdeHoldRoadTest, LosesAHeldKeyWithTheServiceAndIsBackWithIt) {
    openThere();
    watch({keyCode::rightControl});
    ASSERT_TRUE(has(control, {Qt::Key_Control}));
    service.tell(control, true);
    ASSERT_TRUE(told({{keyCode::rightControl, HoldEdgeKind::down}}));
    service.disappear();
    ASSERT_TRUE(
        told({{keyCode::rightControl, HoldEdgeKind::down}, {keyCode::rightControl, HoldEdgeKind::lost}}));
    EXPECT_TRUE(road->offer().keys.empty());
    service.appear();
    ASSERT_TRUE(has(control, {Qt::Key_Control}));
    edges.clear();
    service.tell(control, true);
    EXPECT_TRUE(told({{keyCode::rightControl, HoldEdgeKind::down}}));
}

TEST_F(KdeHoldRoadTest, LetsGoOfWhatAnEarlierRunLeft) {
    openThere();
    watch({keyCode::rightControl});
    EXPECT_TRUE(waitUntil([this] { return service.unregistered.size() == 4; }));
    EXPECT_FALSE(service.unregistered.contains(control));
    EXPECT_TRUE(has(control, {Qt::Key_Control}));
}

TEST_F(KdeHoldRoadTest, WhoOnlyLooksLeavesTheShortcutsOfTheProgramThatRuns) {
    openThere();
    watch({keyCode::rightControl});
    ASSERT_TRUE(has(control, {Qt::Key_Control}));
    {
        KdeHoldRoad doctors(QDBusConnection::sessionBus(), world.foundation, programName,
                            [] { return false; });
        ASSERT_TRUE(waitUntil([&] { return !doctors.offer().keys.empty(); }));
    }
    watch({keyCode::rightControl, keyCode::fn}); // is heard after all that was sent before
    ASSERT_TRUE(has(extra, {Qt::Key_Menu}));
    EXPECT_TRUE(has(control, {Qt::Key_Control}));
    EXPECT_FALSE(service.unregistered.contains(control));
}

TEST_F(KdeHoldRoadTest, FollowsThePreferenceOfTheExtraKey) {
    openThere();
    watch({keyCode::fn});
    ASSERT_TRUE(has(extra, {Qt::Key_Menu}));
    world.preferences.set(preference::extraKey, QStringLiteral("Pause"));
    EXPECT_TRUE(has(extra, {Qt::Key_Pause}));
    world.preferences.set(preference::extraKey, QStringLiteral("nonsense"));
    EXPECT_TRUE(hasNone());
    EXPECT_FALSE(offers(keyCode::fn));
}

TEST_F(KdeHoldRoadTest, MayEndItsWatchWhileItIsTold) {
    openThere();
    handle = road->watch({keyCode::rightControl}, [this](const HoldEdge& edge) {
        edges.emplace_back(edge.keyCode, edge.kind);
        handle.reset();
    });
    ASSERT_TRUE(has(control, {Qt::Key_Control}));
    service.tell(control, true);
    service.tell(control, false);
    EXPECT_TRUE(hasNone());
    EXPECT_EQ(edges, (Edges{{keyCode::rightControl, HoldEdgeKind::down}}));
}

} // namespace

} // namespace lorvane
