// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/pill/PillGeometry.h"

#include <gtest/gtest.h>

namespace lorvane::pillGeometry {

namespace {

// A panel of 48 at the bottom of the left screen; the right one is lower, larger and free.
const DesktopScreen left{{0, 0, 1280, 800}, {0, 0, 1280, 752}};
const DesktopScreen right{{1280, 200, 1921, 1081}, {1280, 200, 1921, 1081}};
const std::vector<DesktopScreen> both{left, right};

const auto isOfOthers = [](const DesktopWindow&) { return false; };

DesktopWindow windowWith(const QRect& bounds) { return {7, bounds, true}; }
bool covers(const QRect& bounds) { return isCovered(left.frame, 1, {{windowWith(bounds)}}, isOfOthers); }

TEST(PillGeometry, TakesTheScreenThatThePointerIsOn) {
    EXPECT_EQ(screenFor({0, 0}, both), left);
    EXPECT_EQ(screenFor({1279, 799}, both), left);
    EXPECT_EQ(screenFor({1280, 200}, both), right);
    EXPECT_EQ(screenFor({3200, 1280}, both), right);
}

TEST(PillGeometry, TakesTheMainScreenWhenThePointerIsOnNone) {
    EXPECT_EQ(screenFor({1280, 199}, both), left);
    EXPECT_EQ(screenFor({-5, -5}, {right, left}), right);
}

TEST(PillGeometry, HasNoPlaceWithoutScreens) { EXPECT_EQ(screenFor({0, 0}, {}), std::nullopt); }

TEST(PillGeometry, TakesTheFirstOfScreensThatShowTheSame) {
    const DesktopScreen twin{left.frame, left.frame};
    EXPECT_EQ(screenFor({5, 5}, {twin, left}), twin);
}

TEST(PillGeometry, StandsOnTheVisibleFrameSixPointsDeep) {
    EXPECT_EQ(panelRect(left, false, 1), QRect(420, 752 + 6 - 96, 440, 96));
}

TEST(PillGeometry, StandsOnTheFrameWhenItIsCovered) {
    EXPECT_EQ(panelRect(left, true, 1), QRect(420, 800 + 6 - 96, 440, 96));
}

TEST(PillGeometry, StandsInTheMiddleOfTheFrameAndNotOfTheVisibleFrame) {
    const DesktopScreen sidePanel{{0, 0, 1280, 800}, {200, 0, 1080, 800}};
    EXPECT_EQ(panelRect(sidePanel, false, 1).x(), 420);
    EXPECT_EQ(panelRect(sidePanel, true, 1).x(), 420);
}

TEST(PillGeometry, RoundsHalfAwayFromZero) {
    EXPECT_EQ(panelRect(right, false, 1).x(), 2021); // 1280 + 960.5 - 220 = 2020.5
    EXPECT_EQ(rounded(2.5), 3);
    EXPECT_EQ(rounded(-2.5), -3);
    const DesktopScreen leftmost{{-1921, 0, 1921, 1080}, {-1921, 0, 1921, 1080}};
    EXPECT_EQ(panelRect(leftmost, false, 1).x(), -1181); // -960.5 - 220 = -1180.5
}

TEST(PillGeometry, CountsInPointsOnADenseScreen) {
    const DesktopScreen dense{{0, 0, 2560, 1600}, {0, 0, 2560, 1504}};
    EXPECT_EQ(panelRect(dense, false, 2), QRect(840, 1504 + 12 - 192, 880, 192));
    const DesktopScreen odd{{0, 0, 2562, 1600}, {0, 0, 2562, 1600}};
    EXPECT_EQ(panelRect(odd, false, 2).x(), 842); // 640.5 - 220 = 420.5 points
}

TEST(PillGeometry, AWindowThatFillsTheScreenCovers) {
    EXPECT_TRUE(covers(left.frame));
    EXPECT_TRUE(covers({-4, -4, 1288, 808}));
}

TEST(PillGeometry, AWindowAboveThePanelDoesNotCover) { EXPECT_FALSE(covers({0, 0, 1280, 752})); }

TEST(PillGeometry, ACoveringWindowMayStopTwoPointsShortOfTheBottomAndNotThree) {
    EXPECT_TRUE(covers({0, 0, 1280, 798}));
    EXPECT_FALSE(covers({0, 0, 1280, 797}));
}

TEST(PillGeometry, ACoveringWindowMayBeTwoPointsNarrowerAndNotThree) {
    EXPECT_TRUE(covers({1, 0, 1278, 800}));
    EXPECT_FALSE(covers({1, 0, 1277, 800}));
}

TEST(PillGeometry, ACoveringWindowIsMoreThanTwoHundredPointsHigh) {
    EXPECT_FALSE(covers({0, 601, 1280, 199}));
    EXPECT_FALSE(covers({0, 600, 1280, 200}));
    EXPECT_TRUE(covers({0, 599, 1280, 201}));
}

TEST(PillGeometry, AWindowOfThisProgramNeverCovers) {
    EXPECT_FALSE(isCovered(left.frame, 1, {{windowWith(left.frame)}},
                           [](const DesktopWindow& window) { return window.id == 7; }));
}

TEST(PillGeometry, ADesktopOrAPanelNeverCovers) {
    EXPECT_FALSE(isCovered(left.frame, 1, {{{7, left.frame, false}}}, isOfOthers));
}

TEST(PillGeometry, OneCoveringWindowAmongManyIsEnough) {
    EXPECT_TRUE(isCovered(
        left.frame, 1, {{windowWith({5, 5, 40, 40}), windowWith(left.frame), windowWith({})}}, isOfOthers));
}

TEST(PillGeometry, AListThatCannotBeReadCountsAsNotCovered) {
    EXPECT_FALSE(isCovered(left.frame, 1, std::nullopt, isOfOthers));
    EXPECT_FALSE(isCovered(left.frame, 1, std::vector<DesktopWindow>{}, isOfOthers));
}

TEST(PillGeometry, ALowerScreenIsCoveredAtItsOwnBottom) {
    const DesktopWindow filling = windowWith(right.frame);
    EXPECT_TRUE(isCovered(right.frame, 1, {{filling}}, isOfOthers));
    EXPECT_FALSE(isCovered(right.frame, 1, {{windowWith({1280, 0, 1921, 1081})}}, isOfOthers));
}

TEST(PillGeometry, TheGraceGrowsWithTheScale) {
    const QRect dense{0, 0, 2560, 1600};
    EXPECT_TRUE(reachesBottom(windowWith({0, 0, 2556, 1596}), dense, 2));
    EXPECT_FALSE(reachesBottom(windowWith({0, 0, 2560, 1595}), dense, 2));
    EXPECT_FALSE(reachesBottom(windowWith({0, 1200, 2560, 400}), dense, 2));
}

TEST(PillGeometry, OnePointAwayIsNotWorthAMove) {
    EXPECT_FALSE(isWorthMoving({100, 100}, {101, 99}, 1));
    EXPECT_TRUE(isWorthMoving({100, 100}, {102, 100}, 1));
    EXPECT_TRUE(isWorthMoving({100, 100}, {100, 98}, 1));
}

TEST(PillGeometry, OneAndAHalfPointsAwayIsWorthAMove) {
    EXPECT_FALSE(isWorthMoving({100, 100}, {102, 98}, 2)); // pixels: one point
    EXPECT_TRUE(isWorthMoving({100, 100}, {103, 100}, 2));
    EXPECT_TRUE(isWorthMoving({100, 100}, {100, 103}, 2));
}

} // namespace

} // namespace lorvane::pillGeometry
