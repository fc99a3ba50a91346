// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/Base64.h"
#include "util/ByteBudget.h"
#include "util/Secrets.h"
#include "util/WakeSlot.h"
#include "util/WorkPool.h"

#include <future>
#include <gtest/gtest.h>
#include <set>

using namespace lorvane::backend;

namespace {

std::string hex(const Digest& digest) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string out;
    for (const auto byte : digest)
        out += {digits[byte >> 4], digits[byte & 15]};
    return out;
}

} // namespace

TEST(Base64, TheVectorsOfTheStandardDecode) {
    const std::pair<const char*, const char*> vectors[] = {{"", ""},
                                                           {"Zg==", "f"},
                                                           {"Zm8=", "fo"},
                                                           {"Zm9v", "foo"},
                                                           {"Zm9vYg==", "foob"},
                                                           {"Zm9vYmE=", "fooba"},
                                                           {"Zm9vYmFy", "foobar"}};
    for (const auto& [text, bytes] : vectors) {
        EXPECT_EQ(decodeBase64(text), bytes);
        EXPECT_EQ(encodeBase64(bytes), text);
    }
}

TEST(Base64, EveryByteSurvives) {
    std::string all;
    for (int i = 0; i < 256; ++i)
        all += static_cast<char>(i);
    EXPECT_EQ(decodeBase64(encodeBase64(all)), all);
}

TEST(Base64, TextThatIsNotBase64GivesNothing) {
    for (const char* text : {"Zg", "Zg=", "Z===", "====", "Zm9v\n", "Zm-v", "Zm 9", "Zg==Zg=="})
        EXPECT_FALSE(decodeBase64(text)) << text;
}

TEST(Secrets, TheDigestIsSha256) {
    EXPECT_EQ(hex(sha256("abc")), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST(Secrets, TokensHave256BitsAndDiffer) {
    std::set<std::string> seen;
    for (int i = 0; i < 1000; ++i) {
        const auto token = newToken();
        EXPECT_EQ(token.size(), 64U);
        EXPECT_EQ(token.find_first_not_of("0123456789abcdef"), std::string::npos);
        EXPECT_TRUE(seen.insert(token).second);
    }
}

TEST(ByteBudget, WhatIsTakenIsGivenBackWithItsOwner) {
    const auto budget = std::make_shared<ByteBudget>(100);
    {
        ByteBudget::Share share(budget);
        EXPECT_TRUE(share.grow(60));
        ByteBudget::Share moved(std::move(share));
        EXPECT_FALSE(moved.grow(41));
        EXPECT_TRUE(moved.grow(40));
        EXPECT_EQ(budget->left(), 0U);
    }
    EXPECT_EQ(budget->left(), 100U);
}

TEST(WakeSlot, ADisarmedSlotCallsNobody) {
    WakeSlot slot;
    int calls = 0;
    {
        const ArmedSlot armed(slot, [&] { ++calls; });
        slot.wake();
    }
    slot.wake();
    EXPECT_EQ(calls, 1);
}

TEST(WorkPool, AFullQueueTakesNoMore) {
    std::promise<void> release;
    std::promise<void> started;
    auto released = release.get_future().share();
    WorkPool pool(1, 2);
    ASSERT_TRUE(pool.submit([&started, released] {
        started.set_value();
        released.wait();
    }));
    started.get_future().wait();
    EXPECT_TRUE(pool.submit([] {}));
    EXPECT_TRUE(pool.submit([] {}));
    EXPECT_FALSE(pool.submit([] {}));
    EXPECT_EQ(pool.queued(), 2U);
    release.set_value();
}

TEST(WorkPool, JobsRunInTheirOrder) {
    std::vector<int> order;
    std::promise<void> done;
    WorkPool pool(1, 100);
    for (int i = 0; i < 50; ++i)
        ASSERT_TRUE(pool.submit([&order, i] { order.push_back(i); }));
    ASSERT_TRUE(pool.submit([&done] { done.set_value(); }));
    done.get_future().wait();
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
}

TEST(WorkPool, AJobThatStepsAsideLetsTheNextBeginAndNoMoreThanThat) {
    std::promise<void> release;
    auto released = release.get_future().share();
    std::promise<void> second;
    WorkPool pool(1, 10, 1);
    ASSERT_TRUE(pool.submit([&pool, released] {
        pool.stepAside();
        pool.stepAside();
        released.wait();
    }));
    ASSERT_TRUE(pool.submit([&second, released] {
        second.set_value();
        released.wait();
    }));
    ASSERT_TRUE(pool.submit([] {}));
    second.get_future().wait();
    EXPECT_EQ(pool.aside(), 1U);
    EXPECT_EQ(pool.running(), 1U);
    EXPECT_EQ(pool.queued(), 1U);
    release.set_value();
    while (pool.queued() + pool.running() + pool.aside() > 0)
        std::this_thread::yield();
}

TEST(WorkPool, TheEndDropsWhatIsQueuedAndWaitsForWhatRuns) {
    std::atomic<bool> finished = false;
    std::atomic<bool> dropped = true;
    {
        std::promise<void> started;
        std::promise<void> queued;
        WorkPool pool(1, 10);
        ASSERT_TRUE(pool.submit([&, both = queued.get_future().share()] {
            started.set_value();
            both.wait();
            while (pool.queued() > 0)
                std::this_thread::yield();
            finished = true;
        }));
        started.get_future().wait();
        ASSERT_TRUE(pool.submit([&dropped] { dropped = false; }));
        queued.set_value();
    }
    EXPECT_TRUE(finished);
    EXPECT_TRUE(dropped);
}
