// SPDX-License-Identifier: GPL-3.0-or-later
// An X server shows every key, as the one beside a compositor does when the compositor lets it.
#include "platform/linux/x11/X11HoldRoad.h"

#include "input/HoldKeys.h"
#include "input/KeyEvents.h"
#include "platform/linux/x11/test/X11DesktopFixture.h"

namespace lorvane {

namespace {

using Edges = std::vector<std::pair<int, HoldEdgeKind>>;

class X11HoldRoadTest : public X11DesktopFixture {
 protected:
    [[nodiscard]] Handle watch() {
        return road.watch({keyCode::rightControl}, [this](const HoldEdge& edge) {
            edges.emplace_back(edge.keyCode, edge.kind);
            times.push_back(edge.time);
        });
    }
    /// Everything that was told of what the hand did so far.
    Edges told() {
        connection.sync();
        return std::exchange(edges, {});
    }

    bool isOpen = true;
    bool areKeysOurs = false;
    X11RawKeys keys{connection, clock};
    X11HoldRoad road{connection, keys, clock, {[this] { return isOpen; }, [this] { return areKeysOurs; }}};
    Edges edges;
    std::vector<Instant> times;
};

TEST_F(X11HoldRoadTest, OffersModifiersAndEscapeWhileEveryKeyIsShown) {
    std::vector<int> codes;
    for (const HoldKeyOffer& key : road.offer().keys) {
        EXPECT_TRUE(key.tellsSides);
        EXPECT_EQ(key.chords, ChordSight::told);
        codes.push_back(key.keyCode);
    }
    EXPECT_EQ(codes, (std::vector<int>{keyCode::rightCommand, keyCode::rightOption, keyCode::rightShift,
                                       keyCode::rightControl, keyCode::escape}));
    int changes = 0;
    const Handle change = road.onChange([&] { ++changes; });
    isOpen = false;
    road.reconsider();
    EXPECT_TRUE(road.offer().keys.empty());
    EXPECT_EQ(changes, 1);
}

TEST_F(X11HoldRoadTest, TellsLeftFromRightAndEachOtherKeyGoingDown) {
    const Handle handle = watch();
    hand.press(keycode::rightControl);
    hand.tap(keycode::letterA);
    hand.release(keycode::rightControl);
    hand.tap(keycode::leftControl);
    hand.tap(keycode::escape);
    EXPECT_EQ(told(), Edges({{keyCode::rightControl, HoldEdgeKind::down},
                             {firstOtherKeyCode + keycode::letterA, HoldEdgeKind::down},
                             {keyCode::rightControl, HoldEdgeKind::up},
                             {keyCode::leftControl, HoldEdgeKind::down},
                             {keyCode::leftControl, HoldEdgeKind::up},
                             {keyCode::escape, HoldEdgeKind::down}}));
    EXPECT_TRUE(std::is_sorted(times.begin(), times.end()));
    EXPECT_LE(times.back(), clock.now());
}

TEST_F(X11HoldRoadTest, LeavesOutPressesOfTheProgramsOwnMaking) {
    const Handle handle = watch();
    areKeysOurs = true;
    hand.press(keycode::leftControl);
    hand.tap(keycode::letterV);
    EXPECT_EQ(told(), Edges());
    areKeysOurs = false;
    hand.release(keycode::leftControl);
    hand.tap(keycode::rightControl);
    EXPECT_EQ(told(), Edges({{keyCode::rightControl, HoldEdgeKind::down},
                             {keyCode::rightControl, HoldEdgeKind::up}}));
}

TEST_F(X11HoldRoadTest, KeepsAPressOverAChangeOfTheWatch) {
    Handle before = watch();
    hand.press(keycode::rightControl);
    const Handle after = watch();
    before.reset();
    hand.release(keycode::rightControl);
    EXPECT_EQ(told(), Edges({{keyCode::rightControl, HoldEdgeKind::down},
                             {keyCode::rightControl, HoldEdgeKind::up}}));
}

TEST_F(X11HoldRoadTest, LosesAHeldKeyWhenTheKeysAreShownNoLonger) {
    const Handle handle = watch();
    hand.press(keycode::rightControl);
    (void)told();
    isOpen = false;
    road.reconsider();
    EXPECT_EQ(told(), Edges({{keyCode::rightControl, HoldEdgeKind::lost}}));
    hand.release(keycode::rightControl);
    EXPECT_EQ(told(), Edges());
}

TEST_F(X11HoldRoadTest, TellsNothingWhenTheWatchHasEnded) {
    Handle handle = watch();
    handle.reset();
    hand.tap(keycode::rightControl);
    EXPECT_EQ(told(), Edges());
}

} // namespace

} // namespace lorvane
