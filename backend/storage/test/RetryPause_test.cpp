// SPDX-License-Identifier: GPL-3.0-or-later
#include "storage/RetryPause.h"

#include <gtest/gtest.h>

using namespace lorvane::backend;
using namespace std::chrono_literals;

TEST(RetryPause, ItDoublesUpToItsBoundAndBeginsAnewAfterASuccess) {
    RetryPause pause;
    RetryPause::Time now{};
    EXPECT_FALSE(pause.resting(now));
    for (const auto expected : {100ms, 200ms, 400ms, 800ms, 1600ms, 3200ms, 5000ms, 5000ms}) {
        pause.failed(now, 0);
        EXPECT_TRUE(pause.resting(now + expected - 1ms));
        EXPECT_FALSE(pause.resting(now + expected));
        EXPECT_TRUE(pause.failing());
        now += expected;
    }
    pause.succeeded();
    EXPECT_FALSE(pause.failing());
    pause.failed(now, 0);
    EXPECT_FALSE(pause.resting(now + 100ms));
}

TEST(RetryPause, ItIsSpreadOverAQuarter) {
    RetryPause pause;
    pause.failed({}, 1);
    EXPECT_TRUE(pause.resting(RetryPause::Time(74ms)));
    EXPECT_FALSE(pause.resting(RetryPause::Time(75ms)));
}
