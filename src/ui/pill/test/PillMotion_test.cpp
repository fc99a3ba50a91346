// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/pill/PillMotion.h"

#include "base/testing/VirtualClock.h"
#include "ui/pill/PillColours.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace lorvane {

namespace {

using pillLayout::Content;

class PillMotionTest : public ::testing::Test {
 protected:
    PillMotionTest() { motion.setShown(true); }
    void show(Content content) { motion.show(content, pillLayout::sizeOf(content, 0)); }
    void settle() { clock.advance(seconds(2)); }

    VirtualClock clock;
    double level = 0;
    int levelsAsked = 0;
    int changes = 0;
    PillMotion motion{clock,
                      {[this] {
                           ++levelsAsked;
                           return level;
                       },
                       [this] { ++changes; }}};
};

TEST_F(PillMotionTest, NothingRunsAtRest) {
    EXPECT_FALSE(motion.isRunning());
    EXPECT_EQ(clock.pendingTimers(), 0U);
    show(Content::restingBars);
    EXPECT_FALSE(motion.isRunning());
}

TEST_F(PillMotionTest, SwingsToANewSizeAndThenRestsExactlyThere) {
    show(Content::controls);
    EXPECT_EQ(motion.size(), QSizeF(58, 15));
    clock.advance(seconds(0.1));
    EXPECT_GT(motion.size().width(), 60);
    EXPECT_LT(motion.size().width(), 110);
    settle();
    EXPECT_EQ(motion.size(), QSizeF(110, 22));
    EXPECT_FALSE(motion.isRunning());
    EXPECT_EQ(clock.pendingTimers(), 0U);
}

TEST_F(PillMotionTest, PassesTheNewSizeOnTheWay) {
    show(Content::wave);
    double widest = 0;
    for (int frame = 0; frame < 60; ++frame) {
        clock.advance(seconds(1.0 / 60));
        widest = std::max(widest, motion.size().width());
    }
    EXPECT_GT(widest, 138);
}

TEST_F(PillMotionTest, TheWaveRunsOnWhileRecordingAndEndsWithIt) {
    level = 0.8;
    show(Content::wave);
    settle();
    EXPECT_TRUE(motion.isRunning());
    EXPECT_GT(motion.bars()[5], 0);
    show(Content::done);
    settle();
    EXPECT_FALSE(motion.isRunning());
}

TEST_F(PillMotionTest, TheWaveTakesSixtyLevelsASecond) {
    show(Content::wave);
    levelsAsked = 0;
    clock.advance(seconds(1));
    EXPECT_NEAR(levelsAsked, 60, 1);
}

TEST_F(PillMotionTest, ANewRecordingStartsFromAFlatLine) {
    level = 1;
    show(Content::wave);
    settle();
    show(Content::progress);
    show(Content::wave);
    EXPECT_EQ(motion.bars(), WaveModel::Bars{});
}

TEST_F(PillMotionTest, TheSpinnerTurnsWhileATakeIsOnItsWay) {
    show(Content::progress);
    settle();
    const double before = motion.turn();
    clock.advance(seconds(0.1));
    EXPECT_NE(motion.turn(), before);
    show(Content::restingBars);
    settle();
    EXPECT_FALSE(motion.isRunning());
}

TEST_F(PillMotionTest, TheCheckMarkPopsIn) {
    show(Content::done);
    EXPECT_EQ(motion.pop(), 0);
    double largest = 0;
    for (int frame = 0; frame < 60; ++frame) {
        clock.advance(seconds(1.0 / 60));
        largest = std::max(largest, motion.pop());
    }
    EXPECT_GT(largest, 1.05);
    EXPECT_EQ(motion.pop(), 1);
}

TEST_F(PillMotionTest, WithLessMotionTheSizeIsThereAtOnceAndNothingRuns) {
    motion.setCalm(true);
    for (const Content content :
         {Content::controls, Content::progress, Content::done, Content::restingBars}) {
        show(content);
        EXPECT_EQ(motion.size(), pillLayout::sizeOf(content, 0));
        EXPECT_EQ(motion.pop(), 1);
        EXPECT_EQ(motion.appearance(), 1);
        EXPECT_FALSE(motion.isRunning());
    }
}

TEST_F(PillMotionTest, WithLessMotionTheWaveTellsTheLevelFiveTimesASecond) {
    motion.setCalm(true);
    level = 1;
    show(Content::wave);
    levelsAsked = 0;
    clock.advance(seconds(1));
    EXPECT_EQ(levelsAsked, 5);
    EXPECT_EQ(motion.bars(), WaveModel::still(1));
}

TEST_F(PillMotionTest, LessMotionStopsWhatIsUnderWay) {
    show(Content::controls);
    clock.advance(seconds(0.05));
    motion.setCalm(true);
    EXPECT_EQ(motion.size(), QSizeF(110, 22));
    EXPECT_FALSE(motion.isRunning());
}

TEST_F(PillMotionTest, NothingMovesOffTheScreen) {
    show(Content::wave);
    motion.setShown(false);
    EXPECT_FALSE(motion.isRunning());
    EXPECT_EQ(motion.size(), QSizeF(136, 22));
    motion.setShown(true);
    EXPECT_TRUE(motion.isRunning());
}

TEST_F(PillMotionTest, ABusyMainThreadDoesNotMakeItJump) {
    show(Content::controls);
    clock.advance(seconds(1.0 / 30));
    const double before = motion.size().width();
    clock.jump(seconds(3));
    clock.advance(seconds(1.0 / 60));
    EXPECT_LT(motion.size().width() - before, 52 * 0.6);
    settle();
    EXPECT_EQ(motion.size(), QSizeF(110, 22));
}

double distance(const QColor& a, const QColor& b) {
    return std::hypot(a.red() - b.red(), std::hypot(a.green() - b.green(), a.blue() - b.blue()));
}

TEST(PillColours, RecordingDoneAndTheSeveritiesHaveAccentsOfTheirOwn) {
    for (const bool moreContrast : {false, true}) {
        const PillColours colours = PillColours::of(moreContrast);
        const std::array accents{colours.recordingBottom, colours.done, colours.warning, colours.error};
        for (std::size_t i = 0; i < accents.size(); ++i) {
            for (std::size_t j = i + 1; j < accents.size(); ++j) {
                EXPECT_GT(distance(accents[i], accents[j]), 60) << i << " and " << j;
            }
        }
    }
}

/// As WCAG 2 reckons it.
double luminance(const QColor& colour) {
    const auto part = [](double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * part(colour.redF()) + 0.7152 * part(colour.greenF()) + 0.0722 * part(colour.blueF());
}
double contrast(const QColor& light, const QColor& dark) {
    return (luminance(light) + 0.05) / (luminance(dark) + 0.05);
}

TEST(PillColours, TextAndAccentsStandOutFromTheCapsule) {
    const PillColours plain = PillColours::of(false);
    EXPECT_GT(contrast(plain.ink, plain.top), 7);
    EXPECT_GT(contrast(plain.ink, plain.recordingBottom), 4.5);
    for (const QColor& accent : {plain.done, plain.warning, plain.error}) {
        EXPECT_GT(contrast(accent, plain.top), 3);
    }
    const PillColours strong = PillColours::of(true);
    EXPECT_GT(contrast(strong.softInk, strong.top), 20);
    EXPECT_GT(contrast(strong.ink, strong.recordingTop), 7);
}

} // namespace

} // namespace lorvane
