// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/pill/WaveModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace lorvane {

namespace {

double highest(const WaveModel& wave) { return *std::max_element(wave.bars().begin(), wave.bars().end()); }

TEST(WaveModel, StartsAsAFlatLine) {
    EXPECT_EQ(WaveModel().bars(), WaveModel::Bars{});
    EXPECT_EQ(WaveModel().historySize(), 23U);
}

// The figures were computed apart, from the formulas, with levels that go through 1, 0.2, 1.7, -1 and 0.5.
TEST(WaveModel, FollowsTheFormulasTickByTick) {
    const double levels[] = {0.5, 1.0, 0.2, 1.7, -1};
    WaveModel wave;
    auto tickTo = [&, tick = 0](int last) mutable {
        while (tick < last) {
            wave.tick(levels[++tick % 5]);
        }
    };
    tickTo(1);
    EXPECT_NEAR(wave.bars()[0], 0.107248792, 1e-8);
    EXPECT_EQ(wave.bars()[1], 0);
    tickTo(2);
    EXPECT_NEAR(wave.bars()[0], 0.140192215, 1e-8);
    tickTo(30);
    EXPECT_NEAR(wave.bars()[0], 0.026747420, 1e-8);
    EXPECT_NEAR(wave.bars()[1], 0.222311831, 1e-8);
    EXPECT_NEAR(wave.bars()[5], 0.286218757, 1e-8);
    EXPECT_NEAR(wave.bars()[10], 0.157182070, 1e-8);
    tickTo(60);
    EXPECT_NEAR(wave.bars()[5], 0.062410164, 1e-8);
    EXPECT_NEAR(wave.bars()[10], 0.085538567, 1e-8);
}

TEST(WaveModel, EachFurtherBarShowsALevelTwoTicksOlder) {
    WaveModel wave;
    for (std::size_t tick = 0; tick < 2 * (WaveModel::count - 1); ++tick) {
        wave.tick(1);
        const std::size_t reached = tick / 2;
        EXPECT_GT(wave.bars()[reached], 0) << tick;
        for (std::size_t bar = reached + 1; bar < WaveModel::count; ++bar) {
            EXPECT_EQ(wave.bars()[bar], 0) << tick;
        }
    }
}

TEST(WaveModel, NeverPassesItsTallestHoweverLoudAndLong) {
    WaveModel wave;
    double most = 0;
    for (int tick = 0; tick < 60 * 60; ++tick) {
        wave.tick(1);
        most = std::max(most, highest(wave));
    }
    EXPECT_GT(most, 0.5);
    EXPECT_LE(most, WaveModel::tallest);
}

TEST(WaveModel, TakesALevelAboveOneForOneAndBelowZeroForZero) {
    WaveModel loud;
    WaveModel louder;
    WaveModel none;
    WaveModel less;
    for (int tick = 0; tick < 40; ++tick) {
        loud.tick(1);
        louder.tick(40);
        none.tick(0);
        less.tick(-3);
    }
    EXPECT_EQ(loud.bars(), louder.bars());
    EXPECT_EQ(none.bars(), less.bars());
}

TEST(WaveModel, StaysFlatInSilence) {
    WaveModel wave;
    for (int tick = 0; tick < 600; ++tick) {
        wave.tick(0);
    }
    EXPECT_EQ(wave.bars(), WaveModel::Bars{});
}

TEST(WaveModel, FallsBackToAFlatLineAfterSpeech) {
    WaveModel wave;
    for (int tick = 0; tick < 60; ++tick) {
        wave.tick(0.8);
    }
    for (int tick = 0; tick < 120; ++tick) {
        wave.tick(0);
    }
    EXPECT_LT(highest(wave), 1e-3);
}

TEST(WaveModel, RemembersTwentyThreeLevelsAndNoMore) {
    WaveModel wave;
    for (int tick = 0; tick < 500; ++tick) {
        wave.tick(0.3);
        EXPECT_EQ(wave.historySize(), 23U);
    }
}

TEST(WaveModel, WithoutMotionItTellsTheLevelAlone) {
    EXPECT_EQ(WaveModel::still(0), WaveModel::Bars{});
    EXPECT_DOUBLE_EQ(WaveModel::still(1)[5], 1);
    EXPECT_DOUBLE_EQ(WaveModel::still(1)[0], 0.42);
    EXPECT_DOUBLE_EQ(WaveModel::still(7)[10], 0.42);
    EXPECT_DOUBLE_EQ(WaveModel::still(0.5)[5], std::pow(0.5, 0.75));
}

} // namespace

} // namespace lorvane
