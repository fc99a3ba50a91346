// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/ServerTime.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

Instant at(std::int64_t milliseconds) { return Instant(std::chrono::milliseconds(milliseconds)); }

TEST(ServerTime, LateArrivalLeavesTheTimeOfTheKeyAsItIs) {
    ServerTime time;
    time.observe(1000, at(5000));
    EXPECT_EQ(time.at(1200, at(9000)), at(5200));
}

TEST(ServerTime, DifferencesAreThoseOfTheServer) {
    ServerTime time;
    time.observe(1000, at(5000));
    const Instant pressed = time.at(1100, at(5600));
    const Instant released = time.at(1440, at(5601));
    EXPECT_EQ(released - pressed, std::chrono::milliseconds(340));
}

TEST(ServerTime, NothingHappensAfterNow) {
    ServerTime time;
    time.observe(1000, at(5000));
    EXPECT_EQ(time.at(1500, at(5100)), at(5100));
    EXPECT_EQ(time.at(1600, at(9000)), at(5200)); // the two clocks stand closer than was thought
}

TEST(ServerTime, WithoutAnObservationTheFirstEventIsNow) {
    ServerTime time;
    EXPECT_EQ(time.at(123, at(7000)), at(7000));
    EXPECT_EQ(time.at(223, at(7500)), at(7100));
}

TEST(ServerTime, GoesOnWhenTheServersTimeStartsAgain) {
    ServerTime time;
    time.observe(0xFFFFFFF0U, at(5000));
    EXPECT_EQ(time.at(0x10U, at(6000)), at(5032));
}

TEST(ServerTime, StaysRightOverManyTurnsOfTheServersTime) {
    ServerTime time;
    std::uint32_t server = 0;
    std::int64_t local = 0;
    time.observe(server, at(local));
    for (int i = 0; i < 20; ++i) {
        server += 0x40000000U;
        local += 0x40000000;
        EXPECT_EQ(time.at(server, at(local + 300)), at(local));
    }
}

TEST(ServerTime, OlderTimeLiesBefore) {
    ServerTime time;
    time.observe(1000, at(5000));
    EXPECT_EQ(time.at(900, at(5000)), at(4900));
}

} // namespace

} // namespace lorvane
