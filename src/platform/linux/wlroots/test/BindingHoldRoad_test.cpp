// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wlroots/BindingHoldRoad.h"

#include "base/PreferenceCatalogue.h"
#include "base/testing/TestFoundation.h"
#include "input/KeyEvents.h"
#include "platform/linux/wlroots/test/ScriptedCompositor.h"
#include "support/Wait.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

const QString downFlags = QStringLiteral("--inhibited ");
const QString upFlags = QStringLiteral("--release --locked --inhibited ");

class BindingHoldRoadTest : public ::testing::Test, public TestFoundation {
 protected:
    void SetUp() override { begin(); }

    void begin() {
        socket.emplace(clock, log, [this] { return QStringList{compositor.place()}; });
        road.emplace(foundation, *socket);
        socket->start();
    }
    void waitForOffer() {
        ASSERT_TRUE(waitUntil([this] { return !road->offer().keys.empty(); }));
    }
    void watch(std::vector<int> keys) {
        handle = road->watch(std::move(keys), [this](const HoldEdge& edge) {
            const char* const kinds[] = {"down", "up", "lost"};
            edges.append(QStringLiteral("%1 %2")
                             .arg(edge.keyCode)
                             .arg(QLatin1String(kinds[static_cast<int>(edge.kind)])));
        });
    }
    bool waitForBound(const QString& what) {
        return waitUntil([&] { return compositor.bound.contains(what); });
    }
    bool waitForEdges(const QStringList& wanted) {
        const bool came = waitUntil([&] { return edges == wanted; });
        EXPECT_EQ(edges, wanted);
        return came;
    }
    /// All that the compositor has said has been heard.
    void settle() {
        bool answered = false;
        socket->request(ipcType::getVersion, {}, [&](const QJsonDocument&) { answered = true; });
        ASSERT_TRUE(waitUntil([&] { return answered; }));
    }
    [[nodiscard]] bool offers(int key) const {
        const HoldOffer offer = road->offer();
        return std::any_of(offer.keys.begin(), offer.keys.end(),
                           [key](const HoldKeyOffer& one) { return one.keyCode == key; });
    }

    ScriptedCompositor compositor;
    std::optional<CompositorSocket> socket;
    std::optional<BindingHoldRoad> road;
    QStringList edges;
    Handle handle;
};

TEST_F(BindingHoldRoadTest, OffersAllKeysOnceTheCompositorAnswers) {
    EXPECT_TRUE(road->offer().keys.empty());
    EXPECT_FALSE(road->offer().obstacle.isEmpty());
    waitForOffer();
    EXPECT_EQ(road->offer().keys.size(), 6U);
    EXPECT_TRUE(offers(keyCode::rightControl));
    EXPECT_TRUE(offers(keyCode::escape));
    EXPECT_TRUE(road->offer().obstacle.isEmpty());
    EXPECT_TRUE(compositor.bound.isEmpty());
}

TEST_F(BindingHoldRoadTest, TellsPressAndReleaseOfAWatchedKey) {
    waitForOffer();
    watch({keyCode::rightControl});
    ASSERT_TRUE(waitForBound(upFlags + "105"));
    EXPECT_TRUE(compositor.press(105));
    EXPECT_TRUE(waitForEdges({"62 down"}));
    EXPECT_TRUE(compositor.release(105));
    EXPECT_TRUE(waitForEdges({"62 down", "62 up"}));
    EXPECT_FALSE(compositor.press(134));
}

TEST_F(BindingHoldRoadTest, KeyIsSeenWithOtherModifiersDown) {
    waitForOffer();
    watch({keyCode::rightControl});
    ASSERT_TRUE(waitForBound(upFlags + "Shift+Control+Mod1+Mod4+Mod5+105"));
    EXPECT_TRUE(compositor.press(105, "Shift+"));
    EXPECT_TRUE(waitForEdges({"62 down"}));
}

TEST_F(BindingHoldRoadTest, OtherKeysAreLookedForOnlyWhileOneIsHeld) {
    waitForOffer();
    watch({keyCode::rightControl});
    ASSERT_TRUE(waitForBound(upFlags + "105"));
    const QSet<QString> before = compositor.bound;
    compositor.press(105);
    ASSERT_TRUE(waitForBound(upFlags + "Shift+Control+255"));
    compositor.release(105);
    EXPECT_TRUE(waitUntil([&] { return compositor.bound == before; }));
}

TEST_F(BindingHoldRoadTest, AnotherKeyIsToldAndTheHeldOneIsLost) {
    waitForOffer();
    watch({keyCode::rightControl});
    ASSERT_TRUE(waitForBound(upFlags + "105"));
    compositor.press(105);
    ASSERT_TRUE(waitForBound(upFlags + "Control+54"));
    compositor.release(54, "Control+");
    EXPECT_TRUE(waitForEdges({"62 down", "310 down", "310 up", "62 lost"}));
    // Whoever is removed while down may end the compositor; the next whole press shows that nothing is down.
    EXPECT_TRUE(compositor.bound.contains(upFlags + "Control+54"));
    edges.clear();
    compositor.press(105);
    compositor.release(105);
    EXPECT_TRUE(waitForEdges({"62 down", "62 up"}));
    EXPECT_TRUE(waitUntil([&] { return !compositor.bound.contains(upFlags + "Control+54"); }));
}

TEST_F(BindingHoldRoadTest, AnotherWatchedKeyTakesTheFirstAway) {
    waitForOffer();
    watch({keyCode::rightControl, keyCode::rightOption});
    ASSERT_TRUE(waitForBound(upFlags + "108"));
    compositor.press(105);
    compositor.press(108);
    compositor.release(108);
    EXPECT_TRUE(waitForEdges({"62 down", "62 lost", "61 down", "61 up"}));
}

TEST_F(BindingHoldRoadTest, HeldKeyThatNeverRepeatsWasPartOfAChord) {
    waitForOffer();
    watch({keyCode::rightControl});
    ASSERT_TRUE(waitForBound(upFlags + "105"));
    compositor.press(105);
    ASSERT_TRUE(waitForEdges({"62 down"}));
    clock.advance(std::chrono::milliseconds(849));
    EXPECT_TRUE(waitForEdges({"62 down"}));
    clock.advance(std::chrono::milliseconds(1));
    EXPECT_TRUE(waitForEdges({"62 down", "256 down", "62 lost"}));
}

TEST_F(BindingHoldRoadTest, KeyThatRepeatsIsHeldUntilItsRepeatsEnd) {
    waitForOffer();
    watch({keyCode::rightControl});
    ASSERT_TRUE(waitForBound(upFlags + "105"));
    compositor.press(105);
    ASSERT_TRUE(waitForEdges({"62 down"}));
    Duration step = std::chrono::milliseconds(600);
    for (int i = 0; i < 100; ++i) {
        clock.advance(step);
        step = std::chrono::milliseconds(40);
        compositor.press(105);
        settle();
        ASSERT_EQ(edges, QStringList("62 down")) << i;
    }
    clock.advance(std::chrono::milliseconds(250));
    EXPECT_TRUE(waitForEdges({"62 down", "62 lost"}));
}

TEST_F(BindingHoldRoadTest, PressRightAfterAPressIsANewOne) {
    waitForOffer();
    watch({keyCode::rightControl});
    ASSERT_TRUE(waitForBound(upFlags + "105"));
    compositor.press(105);
    compositor.press(105);
    compositor.release(105);
    EXPECT_TRUE(waitForEdges({"62 down", "256 down", "62 lost", "62 down", "62 up"}));
}

TEST_F(BindingHoldRoadTest, ModifierOfALeftHandIsToldAsSuch) {
    waitForOffer();
    watch({keyCode::rightControl});
    ASSERT_TRUE(waitForBound(upFlags + "105"));
    compositor.press(105);
    ASSERT_TRUE(waitForBound(upFlags + "Control+50"));
    compositor.release(50, "Control+");
    EXPECT_TRUE(waitForEdges({"62 down", "56 down", "56 up", "62 lost"}));
}

TEST_F(BindingHoldRoadTest, EscapeIsSeenAndNotKept) {
    waitForOffer();
    watch({keyCode::rightControl, keyCode::escape});
    ASSERT_TRUE(waitForBound(upFlags + "9"));
    EXPECT_FALSE(compositor.bound.contains(downFlags + "9"));
    compositor.release(9);
    EXPECT_TRUE(waitForEdges({"53 down", "53 up"}));
}

TEST_F(BindingHoldRoadTest, EscapeIsNotToldOnceItIsNotWatchedAndLeavesWithTheWatch) {
    waitForOffer();
    watch({keyCode::rightControl, keyCode::escape});
    ASSERT_TRUE(waitForBound(upFlags + "9"));
    watch({keyCode::rightControl});
    compositor.release(9);
    compositor.press(105);
    EXPECT_TRUE(waitForEdges({"62 down"}));
    compositor.release(105);
    EXPECT_TRUE(waitForEdges({"62 down", "62 up"}));
    handle.reset();
    EXPECT_TRUE(waitUntil([&] { return compositor.bound.isEmpty(); }));
}

TEST_F(BindingHoldRoadTest, WatchThatChangesDuringAHoldLosesNothing) {
    waitForOffer();
    watch({keyCode::rightControl});
    ASSERT_TRUE(waitForBound(upFlags + "105"));
    compositor.press(105);
    ASSERT_TRUE(waitForEdges({"62 down"}));
    watch({keyCode::rightControl, keyCode::escape});
    compositor.release(105);
    EXPECT_TRUE(waitForEdges({"62 down", "62 up"}));
}

TEST_F(BindingHoldRoadTest, EverythingIsTakenAwayAtTheEnd) {
    waitForOffer();
    watch({keyCode::rightControl, keyCode::escape});
    ASSERT_TRUE(waitForBound(upFlags + "105"));
    road.reset();
    EXPECT_TRUE(waitUntil([&] { return compositor.bound.isEmpty(); }));
}

TEST_F(BindingHoldRoadTest, NothingIsTakenAwayUnderAFinger) {
    waitForOffer();
    watch({keyCode::rightControl});
    ASSERT_TRUE(waitForBound(upFlags + "105"));
    compositor.press(105);
    ASSERT_TRUE(waitForEdges({"62 down"}));
    handle.reset();
    compositor.release(105);
    EXPECT_TRUE(waitUntil([&] { return compositor.bound.isEmpty(); }));
    EXPECT_EQ(edges, QStringList("62 down"));
}

TEST_F(BindingHoldRoadTest, LeftoversOfACrashedRunAreTakenAway) {
    road.reset();
    socket.reset();
    compositor.bound = {upFlags + "105", downFlags + "Shift+134", upFlags + "Control+54"};
    begin();
    waitForOffer();
    EXPECT_TRUE(waitUntil([&] { return compositor.bound == QSet<QString>{upFlags + "Control+54"}; }));
    watch({keyCode::rightControl});
    ASSERT_TRUE(waitForBound(upFlags + "105"));
    compositor.press(105);
    compositor.release(105);
    EXPECT_TRUE(waitForEdges({"62 down", "62 up"}));
    EXPECT_TRUE(waitUntil([&] { return !compositor.bound.contains(upFlags + "Control+54"); }));
}

TEST_F(BindingHoldRoadTest, KeyOfTheUsersOwnIsNotOffered) {
    road.reset();
    socket.reset();
    compositor.config = "bindsym Control_R exec menu\n";
    begin();
    waitForOffer();
    EXPECT_FALSE(offers(keyCode::rightControl));
    EXPECT_TRUE(offers(keyCode::rightCommand));
    EXPECT_FALSE(road->offer().obstacle.isEmpty());
}

TEST_F(BindingHoldRoadTest, BindingThatRunsWithoutBeingInTheConfigurationTakesItsKeyOut) {
    waitForOffer();
    int changes = 0;
    const Handle change = road->onChange([&] { ++changes; });
    compositor.runBinding("exec menu", {}, 0, {"Control_R"});
    EXPECT_TRUE(waitUntil([&] { return changes == 1; }));
    EXPECT_FALSE(offers(keyCode::rightControl));
}

TEST_F(BindingHoldRoadTest, UsersOwnChordCountsAsAnotherKey) {
    waitForOffer();
    watch({keyCode::rightCommand});
    ASSERT_TRUE(waitForBound(upFlags + "134"));
    compositor.press(134);
    compositor.runBinding("exec term", {"Mod4"}, 36);
    EXPECT_TRUE(waitForEdges({"54 down", "292 down", "292 up", "54 lost"}));
}

TEST_F(BindingHoldRoadTest, ModifiersThatReloadAreNotLookedAt) {
    road.reset();
    socket.reset();
    compositor.config = "bindsym Control+Shift+c reload\n";
    begin();
    waitForOffer();
    watch({keyCode::rightControl});
    ASSERT_TRUE(waitForBound(upFlags + "105"));
    compositor.press(105);
    ASSERT_TRUE(waitForBound(upFlags + "Control+54"));
    EXPECT_FALSE(compositor.bound.contains(upFlags + "Shift+Control+54"));
}

TEST_F(BindingHoldRoadTest, BindingsComeBackAfterAReload) {
    waitForOffer();
    watch({keyCode::rightControl});
    ASSERT_TRUE(waitForBound(upFlags + "105"));
    compositor.press(105);
    ASSERT_TRUE(waitForEdges({"62 down"}));
    compositor.bound.clear();
    compositor.tell(ipcType::workspaceEvent, {{"change", "reload"}});
    EXPECT_TRUE(waitForEdges({"62 down", "62 lost"}));
    EXPECT_TRUE(waitForBound(upFlags + "105"));
}

TEST_F(BindingHoldRoadTest, BindingsAreMadeInTheModeThatIsEntered) {
    waitForOffer();
    watch({keyCode::rightControl});
    ASSERT_TRUE(waitForBound(upFlags + "105"));
    compositor.bound.clear();
    compositor.tell(ipcType::modeEvent, {{"change", "resize"}});
    EXPECT_TRUE(waitForBound(upFlags + "105"));
}

TEST_F(BindingHoldRoadTest, CompositorWithoutBindingsAtRunTimeOffersNothing) {
    road.reset();
    socket.reset();
    compositor.knowsBindings = false;
    begin();
    EXPECT_TRUE(waitUntil([this] { return road->offer().obstacle.contains("Unknown/invalid command"); }));
    EXPECT_TRUE(road->offer().keys.empty());
    watch({keyCode::rightControl});
    EXPECT_TRUE(compositor.bound.isEmpty());
}

TEST_F(BindingHoldRoadTest, HeldKeyIsLostWithTheSocketAndWatchedAgainWhenItIsBack) {
    waitForOffer();
    watch({keyCode::rightControl});
    ASSERT_TRUE(waitForBound(upFlags + "105"));
    compositor.press(105);
    ASSERT_TRUE(waitForEdges({"62 down"}));
    compositor.stop();
    EXPECT_TRUE(waitForEdges({"62 down", "62 lost"}));
    EXPECT_TRUE(road->offer().keys.empty());
    compositor.bound.clear();
    compositor.start();
    clock.advance(CompositorSocket::retryPeriod);
    waitForOffer();
    EXPECT_TRUE(waitForBound(upFlags + "105"));
}

TEST_F(BindingHoldRoadTest, NonsenseEndsTheConnectionAndTheNextOneWorks) {
    QByteArray hostile = encodeIpc({ipcType::bindingEvent, {}});
    hostile[9] = '\x7f';
    const QList<QByteArray> nonsense{"HTTP/1.1 400 Bad Request\r\n\r\n", hostile,
                                     encodeIpc({ipcType::getConfig, "{}"}),
                                     encodeIpc({ipcType::runCommand, "no json"})};
    for (const QByteArray& bytes : nonsense) {
        waitForOffer();
        compositor.send(bytes);
        ASSERT_TRUE(waitUntil([this] { return road->offer().keys.empty(); })) << bytes.toStdString();
        clock.advance(CompositorSocket::retryPeriod);
    }
    waitForOffer();
}

TEST_F(BindingHoldRoadTest, MessageThatStopsInTheMiddleIsNoEvent) {
    waitForOffer();
    watch({keyCode::rightControl});
    ASSERT_TRUE(waitForBound(upFlags + "105"));
    compositor.send(encodeIpc({ipcType::bindingEvent, R"({"change":"run"})"}).chopped(3));
    compositor.hangUp();
    ASSERT_TRUE(waitUntil([this] { return road->offer().keys.empty(); }));
    EXPECT_TRUE(edges.isEmpty());
}

TEST_F(BindingHoldRoadTest, EventsOfAnyShapeAreSurvived) {
    waitForOffer();
    watch({keyCode::rightControl});
    ASSERT_TRUE(waitForBound(upFlags + "105"));
    for (const char* const body :
         {"[]", "{}", "nothing", R"({"binding":7})", R"({"binding":{"command":[1]}})",
          R"({"binding":{"symbols":[1,2],"input_code":"x"}})", R"({"change":{}})"}) {
        compositor.send(encodeIpc({ipcType::bindingEvent, body}));
        compositor.send(encodeIpc({ipcType::workspaceEvent, body}));
    }
    compositor.press(105);
    EXPECT_TRUE(waitForEdges({"62 down"}));
}

TEST_F(BindingHoldRoadTest, CompositorThatAnswersNothingOffersNothing) {
    road.reset();
    socket.reset();
    compositor.isSilent = true;
    begin();
    ASSERT_TRUE(waitUntil([this] { return compositor.hasClient(); }));
    EXPECT_FALSE(waitUntil([this] { return !road->offer().keys.empty(); }, std::chrono::milliseconds(100)));
}

TEST_F(BindingHoldRoadTest, ExtraKeyIsWhereThePreferenceSays) {
    waitForOffer();
    preferences.set(preference::extraKey, QStringLiteral("Pause"));
    watch({keyCode::fn});
    ASSERT_TRUE(waitForBound(upFlags + "127"));
    compositor.press(127);
    EXPECT_TRUE(waitForEdges({"63 down"}));
    EXPECT_FALSE(compositor.bound.contains(upFlags + "54"));
}

} // namespace

} // namespace lorvane
