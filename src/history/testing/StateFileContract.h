// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/StateFile.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace lorvane {

/// What every state file does. A world makes one at a place where nothing stands, and opens it `again` as the
/// next start of the program does; it tells what was `setAside`, in order.
template <typename World>
class StateFileContract : public ::testing::Test {
 protected:
    using Predecessor = StateFile::Predecessor;

    std::optional<QByteArray> bytes() {
        const StateFile::Content content = world.again().read();
        const auto* const found = std::get_if<QByteArray>(&content);
        return found != nullptr ? std::optional(*found) : std::nullopt;
    }
    bool replace(const QByteArray& content, Predecessor predecessor = Predecessor::overwritten) {
        return world.file().replace(content, predecessor);
    }

    World world;
};

TYPED_TEST_SUITE_P(StateFileContract);

TYPED_TEST_P(StateFileContract, IsAbsentAtFirst) {
    EXPECT_TRUE(std::holds_alternative<StateFile::Absent>(this->world.file().read()));
}

TYPED_TEST_P(StateFileContract, WhatWasWrittenIsRead) {
    for (const QByteArray& content :
         {QByteArray("first"), QByteArray(3'000'000, 'x'), QByteArray("\0\xff", 2)}) {
        ASSERT_TRUE(this->replace(content));
        EXPECT_TRUE(this->bytes() == content);
    }
    EXPECT_TRUE(this->world.setAside().empty());
}

TYPED_TEST_P(StateFileContract, NoBytesAreAContentToo) {
    ASSERT_TRUE(this->replace("first"));
    ASSERT_TRUE(this->replace(QByteArray("")));
    EXPECT_EQ(this->bytes(), QByteArray(""));
}

TYPED_TEST_P(StateFileContract, ThePredecessorIsSetAsideWhenAsked) {
    ASSERT_TRUE(this->replace("old"));
    ASSERT_TRUE(this->replace("new", StateFile::Predecessor::setAside));
    ASSERT_TRUE(this->replace("newer"));
    EXPECT_EQ(this->bytes(), QByteArray("newer"));
    EXPECT_EQ(this->world.setAside(), std::vector{QByteArray("old")});
}

TYPED_TEST_P(StateFileContract, WhatWasSetAsideBeforeIsKept) {
    for (const char* const content : {"one", "two", "three"}) {
        ASSERT_TRUE(this->replace(content, StateFile::Predecessor::setAside));
    }
    EXPECT_EQ(this->bytes(), QByteArray("three"));
    EXPECT_EQ(this->world.setAside(), (std::vector{QByteArray("one"), QByteArray("two")}));
}

TYPED_TEST_P(StateFileContract, WithoutAPredecessorThereIsNothingToSetAside) {
    ASSERT_TRUE(this->replace("new", StateFile::Predecessor::setAside));
    EXPECT_EQ(this->bytes(), QByteArray("new"));
    EXPECT_TRUE(this->world.setAside().empty());
}

REGISTER_TYPED_TEST_SUITE_P(StateFileContract, IsAbsentAtFirst, WhatWasWrittenIsRead, NoBytesAreAContentToo,
                            ThePredecessorIsSetAsideWhenAsked, WhatWasSetAsideBeforeIsKept,
                            WithoutAPredecessorThereIsNothingToSetAside);

} // namespace lorvane
