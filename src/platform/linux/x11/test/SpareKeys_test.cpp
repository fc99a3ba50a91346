// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/SpareKeys.h"

#include <gtest/gtest.h>

namespace lorvane {

namespace {

using Codes = std::vector<XKeyCode>;
constexpr xkb_keysym_t none = XKB_KEY_NoSymbol;

SpareKeys spareKeys(const Codes& codes) {
    std::vector<KeyChange> keys;
    for (const XKeyCode code : codes) {
        keys.push_back({code, none});
    }
    return SpareKeys(keys);
}

TEST(SpareKeys, NeighboursAreChosenWhereThereAreEnough) {
    EXPECT_EQ(spareKeys({20, 93, 97, 200, 201, 202}).choose(3, {}), (Codes{200, 201, 202}));
}

TEST(SpareKeys, KeysApartAreChosenWhereThereAreNotEnoughNeighbours) {
    EXPECT_EQ(spareKeys({20, 93, 97}).choose(2, {}).size(), 2U);
    EXPECT_EQ(spareKeys({20, 93, 97, 200, 201}).choose(4, {}).size(), 4U);
}

TEST(SpareKeys, NoMoreAreChosenThanThereAre) {
    EXPECT_EQ(spareKeys({20, 93}).choose(5, {}), (Codes{20, 93}));
    EXPECT_TRUE(spareKeys({}).choose(1, {}).empty());
}

TEST(SpareKeys, LeastRecentlyUsedGoesFirst) {
    SpareKeys keys = spareKeys({200, 201, 202});
    for (const XKeyCode key : {200, 201, 202, 200}) {
        keys.use(key);
    }
    EXPECT_EQ(keys.choose(1, {}), Codes{201});
    EXPECT_EQ(keys.choose(2, {}), (Codes{201, 202}));
}

TEST(SpareKeys, RunThatWasUsedLongerAgoGoesFirst) {
    SpareKeys keys = spareKeys({20, 21, 200, 201});
    for (const XKeyCode key : {20, 200, 201, 21}) {
        keys.use(key);
    }
    EXPECT_EQ(keys.choose(2, {}), (Codes{200, 201}));
}

TEST(SpareKeys, TakenKeysAreNotChosen) {
    SpareKeys::Keys taken;
    taken.set(201);
    const SpareKeys keys = spareKeys({200, 201, 202});
    EXPECT_EQ(keys.choose(2, taken), (Codes{200, 202}));
    EXPECT_EQ(keys.countOutside(taken), 2U);
}

TEST(SpareKeys, BorrowedSymbolIsFoundUntilItIsGivenBack) {
    SpareKeys keys = spareKeys({200, 201});
    keys.apply({{201, 'x'}});
    EXPECT_EQ(keys.carrying('x'), XKeyCode{201});
    EXPECT_EQ(keys.borrowed(), (std::vector<KeyChange>{{201, 'x'}}));
    keys.apply({{201, none}});
    EXPECT_EQ(keys.carrying('x'), std::nullopt);
    EXPECT_TRUE(keys.borrowed().empty());
}

TEST(SpareKeys, NeighboursAreChangedByOneRequest) {
    EXPECT_EQ(spareKeys({200, 201, 202}).ranges({{201, 'b'}, {200, 'a'}}),
              (std::vector<KeyRange>{{200, {'a', 'b'}}}));
}

TEST(SpareKeys, SpareKeysInBetweenAreWrittenAgainAsTheyAre) {
    SpareKeys keys = spareKeys({199, 200, 201, 202, 203});
    keys.apply({{201, 'm'}, {203, 'z'}});
    EXPECT_EQ(keys.ranges({{200, 'a'}, {202, 'b'}}), (std::vector<KeyRange>{{200, {'a', 'm', 'b'}}}));
}

TEST(SpareKeys, KeysOfTheLayoutAreNeverWritten) {
    EXPECT_EQ(spareKeys({199, 200, 202}).ranges({{200, 'a'}, {202, 'b'}}),
              (std::vector<KeyRange>{{200, {'a'}}, {202, {'b'}}}));
}

} // namespace

} // namespace lorvane
