// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/testing/VirtualClock.h"
#include "platform/linux/desktop/QtClock.h"
#include "support/Wait.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

using namespace lorvane;

namespace {

/// A clock and a way to let its time pass until something has happened.
struct ClockUnderTest {
    virtual ~ClockUnderTest() = default;
    virtual Clock& clock() = 0;
    virtual bool until(const std::function<bool()>& condition) = 0;
};

struct VirtualUnderTest final : ClockUnderTest {
    VirtualClock time;
    Clock& clock() override { return time; }
    bool until(const std::function<bool()>& condition) override {
        for (int i = 0; i < 1000 && !condition(); ++i) {
            time.advance(seconds(0.001));
        }
        return condition();
    }
};

struct RealUnderTest final : ClockUnderTest {
    QtClock time;
    Clock& clock() override { return time; }
    bool until(const std::function<bool()>& condition) override { return waitUntil(condition); }
};

class ClockContract : public ::testing::TestWithParam<bool> {
 protected:
    ClockContract() {
        if (GetParam()) {
            subject = std::make_unique<RealUnderTest>();
        } else {
            subject = std::make_unique<VirtualUnderTest>();
        }
    }
    Clock& clock() { return subject->clock(); }
    std::unique_ptr<ClockUnderTest> subject;
};

TEST_P(ClockContract, ATimerRunsOnceAndNotBeforeItsTime) {
    const Instant start = clock().now();
    std::vector<Instant> runs;
    const Handle timer = clock().after(seconds(0.02), [&] { runs.push_back(clock().now()); });
    EXPECT_TRUE(runs.empty());
    bool later = false;
    ASSERT_TRUE(subject->until([&] { return !runs.empty(); }));
    const Handle second = clock().after(seconds(0.05), [&] { later = true; });
    ASSERT_TRUE(subject->until([&] { return later; }));
    ASSERT_EQ(runs.size(), 1U);
    EXPECT_GE(runs[0] - start, seconds(0.02));
}

TEST_P(ClockContract, ATimerWithoutDelayDoesNotRunInsideTheCall) {
    bool ran = false;
    const Handle timer = clock().after(Duration::zero(), [&] { ran = true; });
    EXPECT_FALSE(ran);
    EXPECT_TRUE(subject->until([&] { return ran; }));
}

TEST_P(ClockContract, TimersRunInTheOrderInWhichTheyAreDue) {
    std::string order;
    const Handle late = clock().after(seconds(0.06), [&] { order += 'c'; });
    const Handle early = clock().after(seconds(0.01), [&] { order += 'a'; });
    const Handle between = clock().after(seconds(0.03), [&] { order += 'b'; });
    ASSERT_TRUE(subject->until([&] { return order.size() == 3; }));
    EXPECT_EQ(order, "abc");
}

TEST_P(ClockContract, AHandleThatEndsStopsItsTimer) {
    bool ran = false;
    bool later = false;
    Handle timer = clock().after(seconds(0.01), [&] { ran = true; });
    timer.reset();
    const Handle second = clock().after(seconds(0.05), [&] { later = true; });
    ASSERT_TRUE(subject->until([&] { return later; }));
    EXPECT_FALSE(ran);
}

TEST_P(ClockContract, ARepeatingTimerRunsUntilItEndsItself) {
    int runs = 0;
    Handle timer;
    timer = clock().every(seconds(0.005), [&] {
        if (++runs == 3) {
            timer.reset();
        }
    });
    ASSERT_TRUE(subject->until([&] { return runs == 3; }));
    bool later = false;
    const Handle second = clock().after(seconds(0.05), [&] { later = true; });
    ASSERT_TRUE(subject->until([&] { return later; }));
    EXPECT_EQ(runs, 3);
}

TEST_P(ClockContract, BothTimesMoveOnTogether) {
    const Instant now = clock().now();
    const WallTime wall = clock().wallNow();
    bool later = false;
    const Handle timer = clock().after(seconds(0.02), [&] { later = true; });
    ASSERT_TRUE(subject->until([&] { return later; }));
    EXPECT_GE(clock().now() - now, seconds(0.02));
    EXPECT_GE(clock().wallNow() - wall, seconds(0.019));
}

INSTANTIATE_TEST_SUITE_P(Clocks, ClockContract, ::testing::Bool(),
                         [](const auto& with) { return with.param ? "QtClock" : "VirtualClock"; });

} // namespace
