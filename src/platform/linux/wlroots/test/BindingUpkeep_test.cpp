// SPDX-License-Identifier: GPL-3.0-or-later
// What becomes of the bindings: whoever else has some, and a compositor that comes, goes and misbehaves.
#include "platform/linux/wlroots/test/BindingFixture.h"

namespace lorvane {

namespace {

using BindingUpkeepTest = BindingFixture;

TEST_F(BindingUpkeepTest, EverythingIsTakenAwayAtTheEnd) {
    waitForOffer();
    watch({keyCode::rightControl, keyCode::escape});
    ASSERT_TRUE(waitForBound(upFlags + "105"));
    road.reset();
    EXPECT_TRUE(waitUntil([&] { return compositor.bound.isEmpty(); }));
}

TEST_F(BindingUpkeepTest, NothingIsTakenAwayUnderAFinger) {
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

TEST_F(BindingUpkeepTest, LeftoversOfACrashedRunAreTakenAway) {
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

TEST_F(BindingUpkeepTest, KeyOfTheUsersOwnIsNotOffered) {
    road.reset();
    socket.reset();
    compositor.config = "bindsym Control_R exec menu\n";
    begin();
    waitForOffer();
    EXPECT_FALSE(offers(keyCode::rightControl));
    EXPECT_TRUE(offers(keyCode::rightCommand));
    EXPECT_FALSE(road->offer().obstacle.isEmpty());
}

TEST_F(BindingUpkeepTest, BindingThatRunsWithoutBeingInTheConfigurationTakesItsKeyOut) {
    waitForOffer();
    int changes = 0;
    const Handle change = road->onChange([&] { ++changes; });
    compositor.runBinding("exec menu", {}, 0, {"Control_R"});
    EXPECT_TRUE(waitUntil([&] { return changes == 1; }));
    EXPECT_FALSE(offers(keyCode::rightControl));
}

TEST_F(BindingUpkeepTest, ModifiersThatReloadAreNotLookedAt) {
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

TEST_F(BindingUpkeepTest, BindingsComeBackAfterAReload) {
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

TEST_F(BindingUpkeepTest, BindingsAreMadeInTheModeThatIsEntered) {
    waitForOffer();
    watch({keyCode::rightControl});
    ASSERT_TRUE(waitForBound(upFlags + "105"));
    compositor.bound.clear();
    compositor.tell(ipcType::modeEvent, {{"change", "resize"}});
    EXPECT_TRUE(waitForBound(upFlags + "105"));
}

TEST_F(BindingUpkeepTest, CompositorWithoutBindingsAtRunTimeOffersNothing) {
    road.reset();
    socket.reset();
    compositor.knowsBindings = false;
    begin();
    EXPECT_TRUE(waitUntil([this] { return road->offer().obstacle.contains("Unknown/invalid command"); }));
    EXPECT_TRUE(road->offer().keys.empty());
    watch({keyCode::rightControl});
    EXPECT_TRUE(compositor.bound.isEmpty());
}

TEST_F(BindingUpkeepTest, HeldKeyIsLostWithTheSocketAndWatchedAgainWhenItIsBack) {
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

TEST_F(BindingUpkeepTest, NonsenseEndsTheConnectionAndTheNextOneWorks) {
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

TEST_F(BindingUpkeepTest, MessageThatStopsInTheMiddleIsNoEvent) {
    waitForOffer();
    watch({keyCode::rightControl});
    ASSERT_TRUE(waitForBound(upFlags + "105"));
    compositor.send(encodeIpc({ipcType::bindingEvent, R"({"change":"run"})"}).chopped(3));
    compositor.hangUp();
    ASSERT_TRUE(waitUntil([this] { return road->offer().keys.empty(); }));
    EXPECT_TRUE(edges.isEmpty());
}

TEST_F(BindingUpkeepTest, EventsOfAnyShapeAreSurvived) {
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

TEST_F(BindingUpkeepTest, CompositorThatAnswersNothingOffersNothing) {
    road.reset();
    socket.reset();
    compositor.isSilent = true;
    begin();
    ASSERT_TRUE(waitUntil([this] { return compositor.hasClient(); }));
    EXPECT_FALSE(waitUntil([this] { return !road->offer().keys.empty(); }, std::chrono::milliseconds(100)));
}

TEST_F(BindingUpkeepTest, NothingIsLeftInAModeThatIsNotInForceAtTheEnd) {
    waitForOffer();
    watch({keyCode::rightControl});
    ASSERT_TRUE(waitForBound(upFlags + "105"));
    compositor.enterMode("say \"go\"");
    ASSERT_TRUE(waitForBound(upFlags + "105"));
    compositor.enterMode("resize");
    ASSERT_TRUE(waitForBound(upFlags + "105"));
    compositor.enterMode("default");
    settle();
    road.reset();
    ASSERT_TRUE(waitUntil([&] { return compositor.commands.contains("mode \"default\""); }));
    EXPECT_EQ(compositor.mode, QStringLiteral("default")) << "as the user had it";
    for (const char* const mode : {"default", "resize", "say \"go\""}) {
        compositor.enterMode(QString::fromLatin1(mode));
        EXPECT_TRUE(compositor.bound.isEmpty()) << mode;
    }
}

} // namespace

} // namespace lorvane
