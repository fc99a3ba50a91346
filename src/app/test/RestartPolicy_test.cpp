// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/RestartPolicy.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr Instant start{};

TEST(RestartPolicy, AllowsFiveRestartsInAMinuteAndNoSixth) {
    RestartPolicy policy;
    for (int restart = 0; restart < 5; ++restart) {
        EXPECT_TRUE(policy.allowRestart(start + seconds(restart))) << restart;
    }
    EXPECT_FALSE(policy.allowRestart(start + seconds(5)));
}

TEST(RestartPolicy, FiveAtOneInstantAreAllowed) {
    RestartPolicy policy;
    for (int restart = 0; restart < 5; ++restart) {
        EXPECT_TRUE(policy.allowRestart(start)) << restart;
    }
    EXPECT_FALSE(policy.allowRestart(start));
}

TEST(RestartPolicy, AMinuteAfterTheFirstAnotherIsAllowed) {
    RestartPolicy policy;
    for (int restart = 0; restart < 5; ++restart) {
        ASSERT_TRUE(policy.allowRestart(start + seconds(10 * restart)));
    }
    EXPECT_FALSE(policy.allowRestart(start + seconds(60) - milliseconds(1)));
    EXPECT_TRUE(policy.allowRestart(start + seconds(60)));
    EXPECT_FALSE(policy.allowRestart(start + seconds(60)));
    EXPECT_TRUE(policy.allowRestart(start + seconds(70)));
}

TEST(RestartPolicy, ARefusedRestartDoesNotCount) {
    RestartPolicy policy;
    for (int restart = 0; restart < 5; ++restart) {
        ASSERT_TRUE(policy.allowRestart(start));
    }
    for (int refused = 1; refused <= 100; ++refused) {
        ASSERT_FALSE(policy.allowRestart(start + milliseconds(500) * refused));
    }
    EXPECT_TRUE(policy.allowRestart(start + seconds(60)));
}

TEST(RestartPolicy, OneThatDiesEveryThirteenSecondsIsStartedForEver) {
    RestartPolicy policy;
    for (int restart = 0; restart < 1000; ++restart) {
        ASSERT_TRUE(policy.allowRestart(start + seconds(13) * restart)) << restart;
    }
}

} // namespace

} // namespace lorvane
