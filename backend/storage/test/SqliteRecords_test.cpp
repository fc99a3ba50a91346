// SPDX-License-Identifier: GPL-3.0-or-later
#include "storage/SqliteStorage.h"
#include "storage/StorageError.h"
#include "testing/TemporaryFolder.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>

using namespace lorvane::backend;
using namespace std::chrono_literals;
using lorvane::backend::testing::TemporaryFolder;

class SqliteRecordsTest : public ::testing::Test {
 protected:
    DeviceId device(const std::string& name) {
        return storage_.registerDevice(name, sha256("token " + name));
    }
    Joined join(DeviceId device, const std::string& other) {
        return storage_.joinDevices(device, sha256("token " + other));
    }

    TemporaryFolder folder_;
    std::chrono::system_clock::time_point now_{std::chrono::hours(24) * 20'000};
    SqliteStorage storage_{folder_ / "backend.sqlite", [this] { return now_; }};
};

TEST_F(SqliteRecordsTest, JoinedDevicesAreOnePersonAndStayDevices) {
    const auto a = device("a");
    const auto b = device("b");
    EXPECT_NE(storage_.personOf(a), storage_.personOf(b));
    EXPECT_EQ(join(b, "a"), Joined::yes);
    EXPECT_EQ(storage_.personOf(a), storage_.personOf(b));
    EXPECT_EQ(join(b, "a"), Joined::already);
    EXPECT_EQ(join(a, "a"), Joined::already);
    EXPECT_EQ(storage_.deviceOfToken(sha256("token b")), b);
}

TEST_F(SqliteRecordsTest, JoiningGoesOnThroughAllWhoWereJoinedBefore) {
    const auto a = device("a");
    const auto b = device("b");
    const auto c = device("c");
    const auto d = device("d");
    join(d, "c");
    join(b, "a");
    EXPECT_NE(storage_.personOf(a), storage_.personOf(c));
    EXPECT_EQ(join(d, "b"), Joined::yes);
    for (const auto each : {b, c, d})
        EXPECT_EQ(storage_.personOf(each), storage_.personOf(a));
}

TEST_F(SqliteRecordsTest, AnUnknownTokenJoinsNobody) {
    const auto a = device("a");
    EXPECT_EQ(join(a, "nobody"), Joined::unknownAlias);
    EXPECT_EQ(storage_.personOf(a), a);
}

TEST_F(SqliteRecordsTest, ACodeIsGivenOnceAndToOnePersonOnly) {
    const auto a = device("a");
    const auto b = device("b");
    EXPECT_EQ(storage_.referralCode(a, "ONE"), "ONE");
    EXPECT_EQ(storage_.referralCode(a, "TWO"), "ONE");
    EXPECT_FALSE(storage_.referralCode(b, "ONE"));
    EXPECT_EQ(storage_.referralCode(b, "THREE"), "THREE");
    join(b, "a");
    EXPECT_EQ(storage_.referralCode(b, "FOUR"), "ONE");
    EXPECT_EQ(storage_.referralCode(a, "FOUR"), "ONE");
    EXPECT_FALSE(storage_.referralCode(device("c"), "THREE")) << "printed on cards already";
}

TEST_F(SqliteRecordsTest, AnAllowanceIsSpentAndComesBackOneByOne) {
    const Rate rate{3, 1000ms};
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(storage_.admit("mail", 1, rate), 0ms);
    EXPECT_EQ(storage_.admit("mail", 1, rate), 1000ms);
    EXPECT_EQ(storage_.admit("mail", 2, rate), 0ms) << "another person";
    EXPECT_EQ(storage_.admit("other", 1, rate), 0ms) << "another bucket";
    now_ += 400ms;
    EXPECT_EQ(storage_.admit("mail", 1, rate), 600ms) << "a refusal costs nothing";
    now_ += 600ms;
    EXPECT_EQ(storage_.admit("mail", 1, rate), 0ms);
    EXPECT_EQ(storage_.admit("mail", 1, rate), 1000ms);
    now_ += 1h;
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(storage_.admit("mail", 1, rate), 0ms) << "never more than the burst";
    EXPECT_NE(storage_.admit("mail", 1, rate), 0ms);
    EXPECT_EQ(storage_.admit("mail", 1, Rate{}), 0ms) << "no limit";
}

TEST_F(SqliteRecordsTest, AllowancesAreExactWithManyThreads) {
    std::atomic<int> passed = 0;
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 25; ++i)
                passed += storage_.admit("mail", 1, Rate{30, 1h}) == 0ms ? 1 : 0;
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(passed, 30);
}

TEST_F(SqliteRecordsTest, ATakeIsNewOnceWithinTheHourForADeviceAndAPurpose) {
    const auto a = device("a");
    const auto b = device("b");
    EXPECT_TRUE(storage_.firstOfTake(a, sha256("take"), "words"));
    EXPECT_FALSE(storage_.firstOfTake(a, sha256("take"), "words"));
    EXPECT_TRUE(storage_.firstOfTake(a, sha256("take"), "limit"));
    EXPECT_TRUE(storage_.firstOfTake(b, sha256("take"), "words"));
    storage_.forgetTake(a, sha256("take"), "limit");
    EXPECT_TRUE(storage_.firstOfTake(a, sha256("take"), "limit"));
    EXPECT_FALSE(storage_.firstOfTake(a, sha256("take"), "words"));
    now_ += 61min;
    EXPECT_TRUE(storage_.firstOfTake(a, sha256("take"), "words"));
}

TEST_F(SqliteRecordsTest, PhoneWordsAreSummedByDayOverThePersonsDevices) {
    const auto a = device("a");
    const auto b = device("b");
    storage_.addPhoneWords(a, 10);
    storage_.addPhoneWords(a, 5);
    now_ += 24h;
    storage_.addPhoneWords(b, 7);
    EXPECT_EQ(storage_.phoneWords(b).size(), 1U);
    join(b, "a");
    const auto days = storage_.phoneWords(b);
    ASSERT_EQ(days.size(), 2U);
    EXPECT_EQ(days[0].day, 20'001);
    EXPECT_EQ(days[0].words, 7);
    EXPECT_EQ(days[1].day, 20'000);
    EXPECT_EQ(days[1].words, 15);
    EXPECT_EQ(storage_.today(), 20'001);
}

TEST_F(SqliteRecordsTest, TheFirstSourceStays) {
    const auto a = device("a");
    for (const char* source : {"", "friend", "search"})
        storage_.keepOnboarded(a, source);
    EXPECT_THROW(storage_.keepOnboarded(999, "x"), StorageError) << "no such device";
    EXPECT_EQ(storage_.onboardedSource(a), "friend");
    EXPECT_FALSE(storage_.onboardedSource(device("b")));
}
