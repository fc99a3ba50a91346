// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/Pauses.h"
#include "testing/Sound.h"

#include <gtest/gtest.h>
#include <random>

using namespace lorvane::backend;
using lorvane::backend::testing::tone;

namespace {

void append(std::vector<std::int16_t>& to, const std::vector<std::int16_t>& more) {
    to.insert(to.end(), more.begin(), more.end());
}

// Loud parts and quiet parts in turn, with a little noise over all of it.
std::vector<std::int16_t> talk(const std::vector<double>& seconds) {
    std::vector<std::int16_t> samples;
    for (std::size_t i = 0; i < seconds.size(); ++i)
        append(samples, tone(seconds[i], i % 2 == 0 ? 0.3 : 0.0));
    std::mt19937 random(1);
    for (auto& sample : samples)
        sample = static_cast<std::int16_t>(sample + static_cast<int>(random() % 21) - 10);
    return samples;
}

void expectWhole(const std::vector<SpeechSegment>& segments, std::size_t size) {
    ASSERT_FALSE(segments.empty());
    EXPECT_EQ(segments.front().begin, 0U);
    EXPECT_EQ(segments.back().end, size);
    for (std::size_t i = 1; i < segments.size(); ++i)
        EXPECT_EQ(segments[i].begin, segments[i - 1].end);
}

double seconds(std::size_t samples) { return static_cast<double>(samples) / sampleRate; }

} // namespace

TEST(Pauses, NoSoundHasNoSegments) { EXPECT_TRUE(cutAtPauses({}).empty()); }

TEST(Pauses, SoundShorterThanAFrameIsOneSegment) {
    const std::vector<std::int16_t> few(17, 100);
    expectWhole(cutAtPauses(few), few.size());
}

TEST(Pauses, APauseOfHalfASecondIsCutInItsMiddle) {
    const auto samples = talk({1.0, 0.6, 1.0});
    const auto segments = cutAtPauses(samples);
    ASSERT_EQ(segments.size(), 2U);
    expectWhole(segments, samples.size());
    EXPECT_NEAR(seconds(segments[0].end), 1.3, 0.05);
}

TEST(Pauses, AShorterPauseIsNotCut) { EXPECT_EQ(cutAtPauses(talk({1.0, 0.4, 1.0, 0.3, 1.0})).size(), 1U); }

TEST(Pauses, SilenceBeforeAndAfterMakesNoSegmentOfItsOwn) {
    const auto samples = talk({0.0, 2.0, 1.0, 0.7, 1.0, 3.0});
    const auto segments = cutAtPauses(samples);
    ASSERT_EQ(segments.size(), 2U);
    expectWhole(segments, samples.size());
}

TEST(Pauses, SilenceAloneIsCutByItsLengthOnly) {
    const std::vector<std::int16_t> silence(sampleRate * 5, 0);
    EXPECT_EQ(cutAtPauses(silence).size(), 1U);
}

TEST(Pauses, AStretchWithoutAPauseIsCutAtItsQuietestPlace) {
    const auto samples = talk({17.0, 0.2, 9.0});
    const auto segments = cutAtPauses(samples);
    ASSERT_EQ(segments.size(), 2U);
    expectWhole(segments, samples.size());
    EXPECT_NEAR(seconds(segments[0].end), 17.1, 0.1);
}

TEST(Pauses, NoSegmentIsLongerThanTwentySeconds) {
    const auto samples = tone(100, 0.3);
    const auto segments = cutAtPauses(samples);
    expectWhole(segments, samples.size());
    for (const auto& segment : segments)
        EXPECT_LE(seconds(segment.end - segment.begin), 20.01);
}
