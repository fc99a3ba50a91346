// SPDX-License-Identifier: GPL-3.0-or-later
#include "storage/test/StorageContract.h"

#include "storage/StorageError.h"

#include <atomic>
#include <thread>

using namespace lorvane::backend;
using namespace lorvane::backend::testing;
using namespace std::chrono_literals;

namespace {
constexpr const char* deviceA = "6F9619FF-8B86-D011-B42D-00C04FC964FF";
constexpr const char* deviceB = "00000000-0000-4000-8000-000000000001";
} // namespace

TEST_P(StorageContract, ATokenLeadsToItsDevice) {
    const auto id = storage_.registerDevice(deviceA, sha256("one"));
    EXPECT_EQ(storage_.deviceOfToken(sha256("one")), id);
    EXPECT_FALSE(storage_.deviceOfToken(sha256("other")));
}

TEST_P(StorageContract, ASecondRegistrationIsTheSameDeviceAndTheFirstTokenStaysGood) {
    const auto first = storage_.registerDevice(deviceA, sha256("one"));
    EXPECT_EQ(storage_.registerDevice(deviceA, sha256("two")), first);
    EXPECT_NE(storage_.registerDevice(deviceB, sha256("three")), first);
    EXPECT_EQ(storage_.deviceOfToken(sha256("one")), first);
    EXPECT_EQ(storage_.deviceOfToken(sha256("two")), first);
}

TEST_P(StorageContract, OnlyTheNewestTokensOfADeviceStayGood) {
    const auto other = storage_.registerDevice(deviceB, sha256("b"));
    for (int i = 0; i < Storage::tokensPerDevice + 2; ++i)
        storage_.registerDevice(deviceA, sha256(std::to_string(i)));
    EXPECT_FALSE(storage_.deviceOfToken(sha256("0")));
    EXPECT_FALSE(storage_.deviceOfToken(sha256("1")));
    for (int i = 2; i < Storage::tokensPerDevice + 2; ++i)
        EXPECT_TRUE(storage_.deviceOfToken(sha256(std::to_string(i)))) << i;
    EXPECT_EQ(storage_.deviceOfToken(sha256("b")), other);
}

TEST_P(StorageContract, AdaptationIsKeptByDeviceAndEngine) {
    const auto a = storage_.registerDevice(deviceA, sha256("a"));
    const auto b = storage_.registerDevice(deviceB, sha256("b"));
    EXPECT_FALSE(storage_.adaptation(a, "engine"));
    const std::string bytes("\0\1\2\xff", 4);
    storage_.keepAdaptation(a, "engine", "old");
    storage_.keepAdaptation(a, "engine", bytes);
    EXPECT_EQ(storage_.adaptation(a, "engine"), bytes);
    EXPECT_FALSE(storage_.adaptation(b, "engine"));
    EXPECT_FALSE(storage_.adaptation(a, "another"));
}

TEST_P(StorageContract, JoinedDevicesAreOnePersonAndStayDevices) {
    const auto a = device("a");
    const auto b = device("b");
    EXPECT_NE(storage_.personOf(a), storage_.personOf(b));
    EXPECT_EQ(join(b, "a"), Joined::yes);
    EXPECT_EQ(storage_.personOf(a), storage_.personOf(b));
    EXPECT_EQ(join(b, "a"), Joined::already);
    EXPECT_EQ(join(a, "a"), Joined::already);
    EXPECT_EQ(storage_.deviceOfToken(sha256("token b")), b);
}

TEST_P(StorageContract, JoiningGoesOnThroughAllWhoWereJoinedBefore) {
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

TEST_P(StorageContract, AnUnknownTokenJoinsNobody) {
    const auto a = device("a");
    EXPECT_EQ(join(a, "nobody"), Joined::unknownAlias);
    EXPECT_EQ(storage_.personOf(a), a);
}

TEST_P(StorageContract, ACodeIsGivenOnceAndToOnePersonOnly) {
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

TEST_P(StorageContract, AnAllowanceIsSpentAndComesBackOneByOne) {
    const Rate rate{3, 1min};
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(storage_.admit("mail", 1, rate), 0ms);
    // The clock of a real store runs on meanwhile.
    const auto wait = storage_.admit("mail", 1, rate);
    EXPECT_GT(wait, 30s);
    EXPECT_LE(wait, 1min);
    EXPECT_EQ(storage_.admit("mail", 2, rate), 0ms) << "another person";
    EXPECT_EQ(storage_.admit("other", 1, rate), 0ms) << "another bucket";
    world_->advance(20s);
    const auto later = storage_.admit("mail", 1, rate);
    EXPECT_GT(later, 10s);
    EXPECT_LE(later, wait - 20s) << "a refusal costs nothing";
    world_->advance(later);
    EXPECT_EQ(storage_.admit("mail", 1, rate), 0ms);
    EXPECT_GT(storage_.admit("mail", 1, rate), 30s);
    world_->advance(1h);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(storage_.admit("mail", 1, rate), 0ms) << "never more than the burst";
    EXPECT_NE(storage_.admit("mail", 1, rate), 0ms);
    EXPECT_EQ(storage_.admit("mail", 1, Rate{}), 0ms) << "no limit";
}

TEST_P(StorageContract, StrangersHaveAllowancesApartFromEachOtherAndFromPeople) {
    const Rate rate{2, 1min};
    const auto one = sha256("192.0.2.1");
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(storage_.admitStranger("register", one, rate), 0ms);
    const auto wait = storage_.admitStranger("register", one, rate);
    EXPECT_GT(wait, 30s);
    EXPECT_LE(wait, 1min);
    EXPECT_EQ(storage_.admitStranger("register", sha256("192.0.2.2"), rate), 0ms) << "another stranger";
    EXPECT_EQ(storage_.admitStranger("other", one, rate), 0ms) << "another bucket";
    EXPECT_EQ(storage_.admit("register", numberOf(one), rate), 0ms) << "a person";
    world_->advance(wait);
    EXPECT_EQ(storage_.admitStranger("register", one, rate), 0ms);
    EXPECT_NE(storage_.admitStranger("register", one, rate), 0ms);
    EXPECT_EQ(storage_.admitStranger("register", one, Rate{}), 0ms) << "no limit";
}

TEST_P(StorageContract, AfterTheClockIsSetBackAnAllowanceBeginsAnew) {
    const Rate rate{2, 1min};
    for (const auto time : {0h, -24h}) {
        world_->advance(time);
        EXPECT_EQ(storage_.admit("mail", 1, rate), 0ms);
        EXPECT_EQ(storage_.admit("mail", 1, rate), 0ms);
        const auto wait = storage_.admit("mail", 1, rate);
        EXPECT_GT(wait, 30s);
        EXPECT_LE(wait, 1min);
    }
}

TEST_P(StorageContract, AllowancesAreExactWithManyThreads) {
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

TEST_P(StorageContract, ATakeThatWasLetInIsLetInAgainForNothingWithinTheHour) {
    const auto a = device("a");
    const auto b = device("b");
    const Rate two{2, 10h};
    EXPECT_TRUE(storage_.admitTake("take", a, sha256("one"), two));
    EXPECT_TRUE(storage_.admitTake("take", a, sha256("one"), two));
    EXPECT_TRUE(storage_.admitTake("part", a, sha256("one"), two)) << "another bucket";
    EXPECT_TRUE(storage_.admitTake("take", a, sha256("two"), two));
    EXPECT_FALSE(storage_.admitTake("take", a, sha256("three"), two));
    EXPECT_FALSE(storage_.admitTake("take", a, sha256("three"), two)) << "who was refused was not let in";
    EXPECT_FALSE(storage_.admitTake("take", a, {}, two)) << "nobody knows which take it is";
    EXPECT_TRUE(storage_.admitTake("take", a, sha256("two"), two));
    EXPECT_TRUE(storage_.admitTake("take", b, sha256("two"), two)) << "somebody else";
    world_->advance(61min);
    EXPECT_FALSE(storage_.admitTake("take", a, sha256("two"), two)) << "the hour is over";
    EXPECT_TRUE(storage_.admitTake("take", a, sha256("four"), Rate{}));
    EXPECT_THROW(storage_.admitTake("take", 999'999, sha256("one"), two), StorageError) << "no such device";
}

TEST_P(StorageContract, TakesOfAllDevicesOfAPersonCountTogether) {
    const auto a = device("a");
    const auto b = device("b");
    join(b, "a");
    EXPECT_TRUE(storage_.admitTake("take", a, sha256("one"), Rate{1, 10h}));
    EXPECT_FALSE(storage_.admitTake("take", b, sha256("two"), Rate{1, 10h}));
}

TEST_P(StorageContract, WordsOfATakeAreAddedOnceWithinTheHour) {
    const auto a = device("a");
    for (int i = 0; i < 2; ++i)
        storage_.addPhoneWords(a, sha256("take"), 10);
    EXPECT_EQ(storage_.phoneWords(a).at(0).words, 10);
    storage_.addPhoneWords(a, sha256("other"), 5);
    for (int i = 0; i < 2; ++i)
        storage_.addPhoneWords(a, {}, 1);
    EXPECT_EQ(storage_.phoneWords(a).at(0).words, 17);
    EXPECT_THROW(storage_.addPhoneWords(999'999, sha256("take"), 1), StorageError) << "no such device";
}

TEST_P(StorageContract, PhoneWordsAreSummedByDayOverThePersonsDevices) {
    const auto a = device("a");
    const auto b = device("b");
    const auto day = storage_.today();
    storage_.addPhoneWords(a, {}, 10);
    storage_.addPhoneWords(a, {}, 5);
    world_->advance(24h);
    storage_.addPhoneWords(b, {}, 7);
    EXPECT_EQ(storage_.phoneWords(b).size(), 1U);
    join(b, "a");
    const auto days = storage_.phoneWords(b);
    ASSERT_EQ(days.size(), 2U);
    EXPECT_EQ(days[0].day, day + 1);
    EXPECT_EQ(days[0].words, 7);
    EXPECT_EQ(days[1].day, day);
    EXPECT_EQ(days[1].words, 15);
    EXPECT_EQ(storage_.today(), day + 1);
}

TEST_P(StorageContract, TheFirstSourceStays) {
    const auto a = device("a");
    for (const char* source : {"", "friend", "search"})
        storage_.keepOnboarded(a, source);
    EXPECT_THROW(storage_.keepOnboarded(999'999, "x"), StorageError) << "no such device";
    EXPECT_EQ(storage_.onboardedSource(a), "friend");
    EXPECT_FALSE(storage_.onboardedSource(device("b")));
}

TEST_P(StorageContract, ThreadsMayRegisterAndAskAtOnce) {
    std::vector<std::thread> threads;
    threads.reserve(4);
    std::atomic<int> found = 0;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < 50; ++i) {
                const auto digest = sha256(std::to_string(t) + '/' + std::to_string(i));
                const auto id = storage_.registerDevice("device " + std::to_string(t * 50 + i), digest);
                found += storage_.deviceOfToken(digest) == id ? 1 : 0;
            }
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(found, 200);
}

TEST_P(StorageContract, RegistrationsOfOneDeviceAtOnceLeaveTheNewestTokens) {
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < 10; ++i)
                storage_.registerDevice(deviceA, sha256(std::to_string(t) + '/' + std::to_string(i)));
        });
    for (auto& thread : threads)
        thread.join();
    int good = 0;
    for (int t = 0; t < 4; ++t)
        for (int i = 0; i < 10; ++i)
            good += storage_.deviceOfToken(sha256(std::to_string(t) + '/' + std::to_string(i))) ? 1 : 0;
    EXPECT_EQ(good, Storage::tokensPerDevice);
}

TEST_P(StorageContract, JoinsAtOnceMissNobody) {
    const auto a = device("a");
    std::vector<DeviceId> others;
    for (const char* name : {"b", "c", "d", "e"})
        others.push_back(device(name));
    std::vector<std::thread> threads;
    threads.reserve(others.size());
    for (const auto other : others)
        threads.emplace_back([this, other] { storage_.joinDevices(other, sha256("token a")); });
    for (auto& thread : threads)
        thread.join();
    for (const auto other : others)
        EXPECT_EQ(storage_.personOf(other), storage_.personOf(a));
}

TEST_P(StorageContract, ATakeCountsOnceHoweverManySendItAtOnce) {
    const auto a = device("a");
    std::atomic<int> admitted = 0;
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 20; ++i) {
                const auto take = sha256(std::to_string(i));
                storage_.addPhoneWords(a, take, 1);
                admitted += storage_.admitTake("take", a, take, Rate{10, 10h}) ? 1 : 0;
            }
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(storage_.phoneWords(a).at(0).words, 20);
    EXPECT_EQ(admitted, 40) << "ten takes, four times each";
}

TEST_P(StorageContract, WhatIsOlderThanTheHourGoesAndTheRestStays) {
    const auto a = device("a");
    const Rate rate{152, 10h};
    for (int i = 0; i < 150; ++i)
        EXPECT_TRUE(storage_.admitTake("take", a, sha256(std::to_string(i)), rate));
    world_->advance(61min);
    EXPECT_TRUE(storage_.admitTake("take", a, sha256("fresh"), rate));
    EXPECT_TRUE(storage_.admitTake("take", a, sha256("7"), rate)) << "for the last that is left";
    EXPECT_TRUE(storage_.admitTake("take", a, sha256("7"), rate));
    EXPECT_TRUE(storage_.admitTake("take", a, sha256("fresh"), rate));
    EXPECT_FALSE(storage_.admitTake("take", a, sha256("8"), rate));
}

TEST_P(StorageContract, BytesComeBackAsTheyWent) {
    std::string all;
    for (int i = 0; i < 256; ++i)
        all += static_cast<char>(i);
    const auto a = device("'; DROP TABLE device; --");
    storage_.keepAdaptation(a, "engine", all + all);
    EXPECT_EQ(storage_.adaptation(a, "engine"), all + all);
    storage_.keepAdaptation(a, "engine", "");
    EXPECT_EQ(storage_.adaptation(a, "engine"), "");
    EXPECT_THROW(storage_.keepAdaptation(999'999, "engine", "x"), StorageError) << "no such device";
}
