// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/TokenCache.h"

#include "testing/MemoryStorage.h"

#include <gtest/gtest.h>

using namespace lorvane::backend;
using namespace lorvane::backend::testing;
using namespace std::chrono_literals;

class TokenCacheTest : public ::testing::Test {
 protected:
    MemoryStorage storage_;
    std::chrono::steady_clock::time_point now_{1h};
    TokenCache cache_{storage_, 60s, [this] { return now_; }};
    const DeviceId device_ = storage_.registerDevice("device", sha256("token"));
};

TEST_F(TokenCacheTest, AGoodTokenIsRecalledForAMomentAndThenAskedForAgain) {
    EXPECT_FALSE(cache_.recall("token"));
    EXPECT_EQ(cache_.deviceOf("token"), device_);
    now_ += TokenCache::fresh - 1ms;
    EXPECT_EQ(cache_.recall("token"), device_);
    EXPECT_EQ(storage_.lookUps(), 1);
    now_ += 1ms;
    EXPECT_FALSE(cache_.recall("token"));
}

TEST_F(TokenCacheTest, WhileTheStoreIsAwayATokenLastsAMinute) {
    EXPECT_EQ(cache_.deviceOf("token"), device_);
    storage_.setAway(true);
    now_ += 59s;
    EXPECT_EQ(cache_.deviceOf("token"), device_);
    now_ += 1s;
    EXPECT_THROW(cache_.deviceOf("token"), StorageError)
        << "a minute from the store's own answer, not from ours";
    storage_.setAway(false);
    EXPECT_EQ(cache_.deviceOf("token"), device_);
}

TEST_F(TokenCacheTest, WhatWasNeverSeenIsNotGoodWhileTheStoreIsAway) {
    storage_.setAway(true);
    EXPECT_THROW(cache_.deviceOf("token"), StorageError);
    EXPECT_FALSE(cache_.recall("token"));
}

TEST_F(TokenCacheTest, ATokenThatWasTakenBackIsForgotten) {
    EXPECT_EQ(cache_.deviceOf("token"), device_);
    for (int i = 0; i < Storage::tokensPerDevice; ++i)
        storage_.registerDevice("device", sha256(std::to_string(i)));
    now_ += TokenCache::fresh;
    EXPECT_FALSE(cache_.recall("token"));
    EXPECT_FALSE(cache_.deviceOf("token"));
    storage_.setAway(true);
    EXPECT_THROW(cache_.deviceOf("token"), StorageError);
}

TEST_F(TokenCacheTest, UnknownTokensAreNotRemembered) {
    for (int i = 0; i < 10; ++i)
        EXPECT_FALSE(cache_.deviceOf("unknown"));
    EXPECT_EQ(storage_.lookUps(), 10);
}

TEST_F(TokenCacheTest, WithoutAnyTimeNothingIsRemembered) {
    TokenCache none(storage_, 0s, [this] { return now_; });
    EXPECT_EQ(none.deviceOf("token"), device_);
    EXPECT_FALSE(none.recall("token"));
    storage_.setAway(true);
    EXPECT_THROW(none.deviceOf("token"), StorageError);
}
