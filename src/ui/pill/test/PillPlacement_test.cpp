// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/pill/PillPlacement.h"

#include "base/testing/VirtualClock.h"
#include "ui/pill/testing/FakePillDesktop.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

class PillPlacementTest : public ::testing::Test {
 protected:
    struct Move {
        QRect place;
        bool animated;
        friend bool operator==(const Move&, const Move&) = default;
    };

    static QRect above(int bottom) { return {420, bottom + 6 - 96, 440, 96}; }
    void forget() { moves.clear(); }

    VirtualClock clock;
    FakePillDesktop desktop;
    double scale = 1;
    std::vector<Move> moves;
    PillPlacement placement{clock,
                            desktop,
                            {[this](const QRect&) { return scale; },
                             [this](const QRect& place, bool animated) {
                                 moves.push_back({place, animated});
                             }}};
};

TEST_F(PillPlacementTest, PutsTheWindowOnTheVisibleFrame) {
    placement.reposition(false);
    EXPECT_EQ(moves, (std::vector<Move>{{above(752), false}}));
}

TEST_F(PillPlacementTest, DropsToTheBottomWhileAWindowOfAnotherProgramCoversTheScreen) {
    placement.reposition(false);
    desktop.stack = {{{7, {0, 0, 1280, 800}, true}}};
    placement.reposition(true);
    desktop.stack = std::vector<DesktopWindow>{};
    placement.reposition(true);
    EXPECT_EQ(moves, (std::vector<Move>{{above(752), false}, {above(800), true}, {above(752), true}}));
}

TEST_F(PillPlacementTest, AWindowOfThisProgramDoesNotMoveIt) {
    placement.reposition(false);
    desktop.stack = {{{desktop.own, {0, 0, 1280, 800}, true}}};
    placement.reposition(true);
    EXPECT_EQ(moves.size(), 1U);
}

TEST_F(PillPlacementTest, DoesNotTouchAWindowThatStandsRight) {
    placement.reposition(false);
    clock.advance(seconds(60));
    EXPECT_EQ(moves.size(), 1U);
}

TEST_F(PillPlacementTest, DoesNotTouchAWindowThatIsOnePointAway) {
    placement.reposition(false);
    desktop.layout.front().visibleFrame.setHeight(751);
    placement.reposition(true);
    EXPECT_EQ(moves.size(), 1U);
    desktop.layout.front().visibleFrame.setHeight(750);
    placement.reposition(true);
    EXPECT_EQ(moves.size(), 2U);
}

TEST_F(PillPlacementTest, AHalfPointMoreThanOneIsAMoveOnADenseScreen) {
    scale = 2;
    placement.reposition(false);
    desktop.layout.front().visibleFrame.setHeight(750);
    placement.reposition(true);
    EXPECT_EQ(moves.size(), 1U);
    desktop.layout.front().visibleFrame.setHeight(749);
    placement.reposition(true);
    EXPECT_EQ(moves.size(), 2U);
}

TEST_F(PillPlacementTest, TakesItsNewSizeWhenTheScaleChanges) {
    placement.reposition(false);
    scale = 2;
    placement.reposition(false);
    ASSERT_EQ(moves.size(), 2U);
    EXPECT_EQ(moves.back().place.size(), QSize(880, 192));
}

TEST_F(PillPlacementTest, FollowsThePointerToAnotherScreenWithinASecond) {
    placement.reposition(false);
    forget();
    desktop.layout.push_back({{1280, 0, 1280, 800}, {1280, 0, 1280, 800}});
    desktop.at = {2000, 400};
    clock.advance(seconds(0.9));
    EXPECT_TRUE(moves.empty());
    clock.advance(seconds(0.2));
    EXPECT_EQ(moves, (std::vector<Move>{{above(800).translated(1280, 0), true}}));
}

TEST_F(PillPlacementTest, AnotherActiveWindowOrWorkspaceMovesItWithAnimation) {
    for (const DesktopChange change : {DesktopChange::activeWindow, DesktopChange::workspace}) {
        placement.reposition(false);
        forget();
        desktop.stack = {{{7, {0, 0, 1280, 800}, true}}};
        desktop.change(change);
        clock.settle();
        EXPECT_EQ(moves, (std::vector<Move>{{above(800), true}}));
        desktop.stack = std::vector<DesktopWindow>{};
    }
}

TEST_F(PillPlacementTest, OtherScreensMoveItWithoutAnimation) {
    placement.reposition(false);
    forget();
    desktop.layout.front() = {{0, 0, 1280, 1024}, {0, 0, 1280, 1024}};
    desktop.change(DesktopChange::screens);
    clock.settle();
    EXPECT_EQ(moves, (std::vector<Move>{{above(1024), false}}));
}

TEST_F(PillPlacementTest, ASwarmOfChangesIsOneLook) {
    placement.reposition(false);
    desktop.stack = {{{7, {0, 0, 1280, 800}, true}}};
    desktop.listings = 0;
    for (int i = 0; i < 20; ++i) {
        desktop.change(DesktopChange::activeWindow);
    }
    clock.settle();
    EXPECT_EQ(desktop.listings, 1);
}

TEST_F(PillPlacementTest, WithoutAScreenItStaysWhereItIs) {
    desktop.layout.clear();
    placement.reposition(false);
    EXPECT_TRUE(moves.empty());
}

TEST_F(PillPlacementTest, AListOfWindowsThatCannotBeReadIsNoCover) {
    desktop.stack = std::nullopt;
    placement.reposition(false);
    EXPECT_EQ(moves, (std::vector<Move>{{above(752), false}}));
}

TEST_F(PillPlacementTest, WhereThePanelIsNotAtTheBottomNobodyAsksForTheWindows) {
    desktop.layout = {{{0, 0, 1280, 800}, {0, 30, 1280, 770}}};
    placement.reposition(false);
    EXPECT_EQ(desktop.listings, 0);
    EXPECT_EQ(moves.front().place, above(800));
}

TEST_F(PillPlacementTest, OneTimerIsAllThatRuns) { EXPECT_EQ(clock.pendingTimers(), 1U); }

} // namespace

} // namespace lorvane
