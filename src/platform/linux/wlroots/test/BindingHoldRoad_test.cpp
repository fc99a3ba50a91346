// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wlroots/test/BindingFixture.h"

#include "base/PreferenceCatalogue.h"

namespace lorvane {

namespace {

using BindingHoldRoadTest = BindingFixture;

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

TEST_F(BindingHoldRoadTest, UsersOwnChordCountsAsAnotherKey) {
    waitForOffer();
    watch({keyCode::rightCommand});
    ASSERT_TRUE(waitForBound(upFlags + "134"));
    compositor.press(134);
    compositor.runBinding("exec term", {"Mod4"}, 36);
    EXPECT_TRUE(waitForEdges({"54 down", "292 down", "292 up", "54 lost"}));
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

TEST_F(BindingHoldRoadTest, KeyIsInForceOnceTheCompositorHasSetItsBindings) {
    waitForOffer();
    int changes = 0;
    const Handle change = road->onChange([&] { ++changes; });
    watch({keyCode::rightControl});
    EXPECT_FALSE(road->isInForce(keyCode::rightControl)) << "nobody has answered yet";
    EXPECT_TRUE(waitUntil([&] { return road->isInForce(keyCode::rightControl); }));
    EXPECT_TRUE(compositor.bound.contains(upFlags + "105"));
    EXPECT_FALSE(road->isInForce(keyCode::rightOption));
    EXPECT_EQ(changes, 1);
    compositor.stop();
    EXPECT_TRUE(waitUntil([&] { return !road->isInForce(keyCode::rightControl); }));
}

} // namespace

} // namespace lorvane
