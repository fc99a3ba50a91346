// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/pulse/ChimeSound.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace lorvane {

namespace {

int loudest(const std::vector<std::int16_t>& samples, std::size_t from, std::size_t to) {
    int most = 0;
    for (std::size_t i = from; i < to; ++i) {
        most = std::max(most, std::abs(static_cast<int>(samples[i])));
    }
    return most;
}

TEST(ChimeSound, IsSoftAndShort) {
    const auto samples = chimeSound();
    EXPECT_LT(samples.size(), chimeRate / 2);
    const int peak = loudest(samples, 0, samples.size());
    EXPECT_GT(peak, 1'600);
    EXPECT_LT(peak, 6'600) << "a fifth of full scale";
}

TEST(ChimeSound, BeginsAndEndsInSilenceAndDiesAway) {
    const auto samples = chimeSound();
    EXPECT_EQ(samples.front(), 0);
    EXPECT_LT(std::abs(static_cast<int>(samples.back())), 5);
    const std::size_t quarter = samples.size() / 4;
    EXPECT_GT(loudest(samples, 0, quarter), 3 * loudest(samples, 2 * quarter, 3 * quarter));
}

TEST(ChimeSound, HasNoJump) {
    const auto samples = chimeSound();
    for (std::size_t i = 1; i < samples.size(); ++i) {
        ASSERT_LT(std::abs(samples[i] - samples[i - 1]), 900) << "at " << i;
    }
}

} // namespace

} // namespace lorvane
