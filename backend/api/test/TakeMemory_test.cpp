// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/TakeMemory.h"

#include <future>
#include <gtest/gtest.h>

using namespace lorvane::backend;
using namespace std::chrono_literals;

class TakeMemoryTest : public ::testing::Test {
 protected:
    TakeMemory::TimePoint now_{};
    TakeMemory memory_{120s, [this] { return now_; }, 3};
    const TakeId take_ = sha256("take");
};

TEST_F(TakeMemoryTest, TheSameTakeIsTheSameProgressForTwoMinutes) {
    const auto first = memory_.find(1, take_);
    now_ += 119s;
    EXPECT_EQ(memory_.find(1, take_), first);
    now_ += 119s;
    EXPECT_EQ(memory_.find(1, take_), first) << "each use begins the time anew";
    now_ += 120s;
    EXPECT_NE(memory_.find(1, take_), first);
}

TEST_F(TakeMemoryTest, AnotherDeviceNeverGetsIt) {
    const auto mine = memory_.find(1, take_);
    EXPECT_NE(memory_.find(2, take_), mine);
}

TEST_F(TakeMemoryTest, AnotherTakeIsAnotherProgress) {
    const auto first = memory_.find(1, take_);
    const auto second = memory_.find(1, sha256("other"));
    EXPECT_NE(second, first);
    EXPECT_EQ(memory_.find(1, sha256("other")), second);
}

TEST_F(TakeMemoryTest, ATakeWithoutAnIdIsNotKept) {
    EXPECT_NE(memory_.find(1, {}), memory_.find(1, {}));
    EXPECT_EQ(memory_.size(), 0U);
}

TEST_F(TakeMemoryTest, ItIsBoundedAndForgets) {
    for (int i = 0; i < 10; ++i)
        memory_.find(1, sha256(std::to_string(i)));
    EXPECT_EQ(memory_.size(), 3U);
    now_ += 121s;
    memory_.sweep();
    EXPECT_EQ(memory_.size(), 0U);
}

TEST_F(TakeMemoryTest, ATakeThatIsWorkedOnForLongIsKeptAndItsTimeBeginsWithItsEnd) {
    const auto progress = memory_.find(1, take_);
    {
        const TakeProgress::Turn turn(*progress, {});
        now_ += 150s;
        memory_.sweep();
    }
    now_ += 119s;
    EXPECT_EQ(memory_.find(1, take_), progress);
    now_ += 120s;
    memory_.sweep();
    EXPECT_EQ(memory_.size(), 0U);
}

TEST_F(TakeMemoryTest, TheSecondRequestOfATakeWaitsForTheFirst) {
    const auto progress = memory_.find(1, take_);
    std::optional<TakeProgress::Turn> first;
    first.emplace(*progress, std::stop_token());
    auto second = std::async(std::launch::async, [&] {
        TakeProgress::Turn turn(*progress, {});
        std::string heard;
        for (const auto& segment : turn.segments())
            heard += segment.text + ' ';
        return heard;
    });
    first->segments() = {{"one", {}, true}, {"two", {}, true}};
    EXPECT_EQ(second.wait_for(20ms), std::future_status::timeout);
    first.reset();
    EXPECT_EQ(second.get(), "one two ");
}

TEST_F(TakeMemoryTest, AWaitingRequestCanBeStopped) {
    const auto progress = memory_.find(1, take_);
    const TakeProgress::Turn first(*progress, {});
    std::stop_source stop;
    auto second = std::async(std::launch::async, [&] {
        const TakeProgress::Turn turn(*progress, stop.get_token());
        return static_cast<bool>(turn);
    });
    stop.request_stop();
    EXPECT_FALSE(second.get());
}
