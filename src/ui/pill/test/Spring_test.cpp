// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/pill/Spring.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace lorvane {

namespace {

constexpr Spring::Feel lively{0.32, 0.7, 0.05};
constexpr Spring::Feel calm{0.32, 1, 0.05};

double highest(Spring& spring) {
    double most = spring.value();
    for (int frame = 0; frame < 120; ++frame) {
        spring.advance(seconds(1.0 / 60));
        most = std::max(most, spring.value());
    }
    return most;
}

TEST(Spring, StaysWhereItIsWithoutATarget) {
    Spring spring(lively, 58);
    spring.advance(seconds(1));
    EXPECT_EQ(spring.value(), 58);
    EXPECT_TRUE(spring.isAtRest());
}

// A damping of 0.7 passes the target by exp(-pi * 0.7 / sqrt(1 - 0.49)) = 4.6 %.
TEST(Spring, PassesItsTargetByWhatItsDampingSays) {
    Spring spring(lively, 0);
    spring.setTarget(100);
    EXPECT_NEAR(highest(spring), 104.6, 0.3);
}

// Half a swing takes response / (2 * sqrt(1 - 0.49)) = 0.224 s.
TEST(Spring, IsFarthestAfterHalfASwing) {
    Spring spring(lively, 0);
    spring.setTarget(100);
    spring.advance(seconds(0.22404));
    const double top = spring.value();
    EXPECT_NEAR(top, 104.6, 0.05);
    spring.advance(seconds(0.01));
    EXPECT_LT(spring.value(), top);
}

TEST(Spring, ComesToRestExactlyOnItsTarget) {
    Spring spring(lively, 0);
    spring.setTarget(100);
    (void)highest(spring);
    EXPECT_TRUE(spring.isAtRest());
    EXPECT_EQ(spring.value(), 100);
}

TEST(Spring, ADampingOfOneNeverPassesTheTarget) {
    Spring spring(calm, 0);
    spring.setTarget(100);
    EXPECT_LE(highest(spring), 100);
    EXPECT_EQ(spring.value(), 100);
}

TEST(Spring, MovesTheSameInOneStepAsInMany) {
    for (const Spring::Feel& feel : {lively, calm}) {
        Spring one(feel, 0);
        Spring many(feel, 0);
        one.setTarget(100);
        many.setTarget(100);
        one.advance(seconds(0.1));
        for (int step = 0; step < 10; ++step) {
            many.advance(seconds(0.01));
        }
        EXPECT_NEAR(one.value(), many.value(), 1e-6);
    }
}

TEST(Spring, KeepsItsSpeedWhenTheTargetChangesOnTheWay) {
    Spring spring(lively, 0);
    spring.setTarget(100);
    spring.advance(seconds(0.05));
    const double before = spring.value();
    spring.setTarget(0);
    spring.advance(seconds(0.005));
    EXPECT_GT(spring.value(), before);
}

TEST(Spring, JumpsWithoutMotion) {
    Spring spring(lively, 0);
    spring.setTarget(100);
    spring.advance(seconds(0.05));
    spring.jump(30);
    EXPECT_EQ(spring.value(), 30);
    EXPECT_TRUE(spring.isAtRest());
}

} // namespace

} // namespace lorvane
