// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/PCMSink.h"
#include "base/testing/VirtualClock.h"

#include <gtest/gtest.h>

#include <thread>

namespace lorvane {

namespace {

class PCMSinkTest : public ::testing::Test {
 protected:
    void appendLevels(const std::vector<double>& levels) {
        for (const double level : levels) {
            sink.append("ab", level);
        }
    }
    VirtualClock clock;
    PCMSink sink{clock};
};

TEST_F(PCMSinkTest, IsEmptyAndSilentAtRest) {
    EXPECT_EQ(sink.pcmSize(), 0);
    EXPECT_EQ(sink.lastLevel(), 0.0);
    EXPECT_EQ(sink.quietSince(), std::nullopt);
    EXPECT_EQ(sink.levelCount(), 0U);
}

TEST_F(PCMSinkTest, KeepsTheBytesInTheirOrder) {
    sink.append("one", 0.5);
    sink.append("two", 0.25);
    EXPECT_EQ(sink.lastLevel(), 0.25);
    EXPECT_EQ(sink.drain(), "onetwo");
}

TEST_F(PCMSinkTest, DrainingTakesThePcmAndLeavesTheRest) {
    appendLevels({0.1, 0.1});
    EXPECT_EQ(sink.drain(), "abab");
    EXPECT_EQ(sink.drain(), QByteArray());
    EXPECT_EQ(sink.levelCount(), 2U);
    EXPECT_EQ(sink.lastLevel(), 0.1);
    EXPECT_TRUE(sink.quietSince());
}

TEST_F(PCMSinkTest, ResetReturnsItToRest) {
    appendLevels({0.1});
    sink.reset();
    EXPECT_EQ(sink.drain(), QByteArray());
    EXPECT_EQ(sink.lastLevel(), 0.0);
    EXPECT_EQ(sink.quietSince(), std::nullopt);
    EXPECT_EQ(sink.levelSummary(), QStringLiteral("no levels"));
}

TEST_F(PCMSinkTest, QuietBeginsWithTheFirstBufferBelowTheBoundAndLasts) {
    clock.advance(seconds(1));
    appendLevels({0.17});
    const Instant began = clock.now();
    clock.advance(seconds(1));
    appendLevels({0.0});
    EXPECT_EQ(sink.quietSince(), began);
}

TEST_F(PCMSinkTest, ASoundEndsTheQuietAndTheNextOneBeginsAnew) {
    appendLevels({0.1, 0.5});
    EXPECT_EQ(sink.quietSince(), std::nullopt);
    clock.advance(seconds(2));
    appendLevels({0.1});
    EXPECT_EQ(sink.quietSince(), clock.now());
}

TEST_F(PCMSinkTest, LevelOfExactlyTheQuietBoundIsNotQuiet) {
    appendLevels({0.18});
    EXPECT_EQ(sink.quietSince(), std::nullopt);
    EXPECT_EQ(sink.levelSummary(),
              QStringLiteral("levels p5 0.180 p10 0.180 p25 0.180 p50 0.180, 0% below 0.18"));
}

TEST_F(PCMSinkTest, OneLevelIsAllFourPoints) {
    appendLevels({0.125});
    EXPECT_EQ(sink.levelSummary(),
              QStringLiteral("levels p5 0.125 p10 0.125 p25 0.125 p50 0.125, 100% below 0.18"));
}

TEST_F(PCMSinkTest, WithTwentyLevelsThePointAtAFiveHundredthIsTheSecondSmallest) {
    std::vector<double> descending;
    for (int i = 19; i >= 0; --i) {
        descending.push_back(i * 0.05);
    }
    appendLevels(descending);
    // Indices 1, 2, 5 and 10; 0, 0.05, 0.1 and 0.15 of twenty are quiet.
    EXPECT_EQ(sink.levelSummary(),
              QStringLiteral("levels p5 0.050 p10 0.100 p25 0.250 p50 0.500, 20% below 0.18"));
}

TEST_F(PCMSinkTest, AfterTheMostLevelsOnlyTheAudioGrows) {
    for (std::size_t i = 0; i < PCMSink::mostLevels; ++i) {
        sink.append("ab", 0.5);
    }
    EXPECT_EQ(sink.levelCount(), 60'000U);
    sink.append("ab", 0.0);
    EXPECT_EQ(sink.levelCount(), 60'000U);
    EXPECT_EQ(sink.pcmSize(), 120'002);
    EXPECT_EQ(sink.lastLevel(), 0.0);
    EXPECT_TRUE(sink.quietSince());
    EXPECT_TRUE(sink.levelSummary().endsWith(QStringLiteral(", 0% below 0.18")));
}

TEST_F(PCMSinkTest, NothingIsLostBetweenTheAudioThreadAndTheMainThread) {
    constexpr int buffers = 20'000;
    std::thread audio([&] {
        for (int i = 0; i < buffers; ++i) {
            sink.append("abcd", 0.5);
        }
    });
    qsizetype taken = 0;
    while (sink.levelCount() < buffers) {
        taken += sink.drain().size();
        EXPECT_LE(sink.lastLevel(), 0.5);
    }
    audio.join();
    taken += sink.drain().size();
    EXPECT_EQ(taken, buffers * 4);
}

} // namespace

} // namespace lorvane
