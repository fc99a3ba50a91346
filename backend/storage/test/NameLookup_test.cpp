// SPDX-License-Identifier: GPL-3.0-or-later
#include "storage/NameLookup.h"

#include "testing/ServerUnderTest.h"

#include <atomic>
#include <gtest/gtest.h>
#include <latch>

using namespace lorvane::backend;
using namespace std::chrono_literals;
using lorvane::backend::testing::eventually;

namespace {

std::chrono::steady_clock::time_point in(std::chrono::milliseconds time) {
    return std::chrono::steady_clock::now() + time;
}

// A resolver that answers when it is let.
struct Slow {
    struct Shared {
        std::latch let{1};
        std::atomic<int> asked = 0;
        std::atomic<int> answered = 0;
    };
    const std::shared_ptr<Shared> shared = std::make_shared<Shared>();

    NameLookup::Resolve resolve() const {
        return [shared = shared](const std::string& name) {
            ++shared->asked;
            shared->let.wait();
            ++shared->answered;
            return FoundAddresses{{"address of " + name}, {}};
        };
    }
};

} // namespace

TEST(NameLookup, FindsWhatTheSystemKnows) {
    NameLookup names;
    EXPECT_EQ(names.find("127.0.0.1", in(20s)).addresses, std::vector<std::string>{"127.0.0.1"});
    const auto unknown = names.find("no.such.host.invalid", in(60s));
    EXPECT_TRUE(unknown.addresses.empty());
    EXPECT_FALSE(unknown.failure.empty());
}

// Whatever time it takes until it is let, the callers are back before.
TEST(NameLookup, AResolverThatGivesNoAnswerHoldsNobodyAndIsAskedOnce) {
    const Slow slow;
    NameLookup names(slow.resolve());
    for (int i = 0; i < 20; ++i) {
        const auto found = names.find("db", in(1ms));
        EXPECT_TRUE(found.addresses.empty());
        EXPECT_EQ(found.failure, "no answer about this name in time");
    }
    EXPECT_TRUE(eventually([&] { return slow.shared->asked == 1; }));
    EXPECT_EQ(slow.shared->answered, 0);
    slow.shared->let.count_down();
    EXPECT_TRUE(eventually([&] { return slow.shared->answered == 1; }));
    EXPECT_EQ(names.find("db", in(60s)).addresses, std::vector<std::string>{"address of db"});
}

TEST(NameLookup, MayGoWhileItsResolverIsStillAtWork) {
    const Slow slow;
    {
        NameLookup names(slow.resolve());
        names.find("db", in(1ms));
    }
    slow.shared->let.count_down();
    EXPECT_TRUE(eventually([&] { return slow.shared->answered == 1; }));
}
