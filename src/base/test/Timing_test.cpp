// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Dates.h"
#include "base/SerialQueue.h"
#include "base/Signal.h"
#include "base/testing/VirtualClock.h"

#include <QRegularExpression>
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <future>
#include <random>
#include <string>

using namespace lorvane;

namespace {

TEST(VirtualClock, RunsTimersMadeMeanwhileInTheSameAdvance) {
    VirtualClock clock;
    std::string order;
    Handle second;
    const Handle first = clock.after(seconds(1), [&] {
        order += 'a';
        second = clock.after(seconds(1), [&] { order += 'b'; });
    });
    clock.advance(seconds(2));
    EXPECT_EQ(order, "ab");
}

TEST(VirtualClock, TimersOfTheSameMomentRunInTheOrderOfTheirMaking) {
    VirtualClock clock;
    std::string order;
    const Handle a = clock.after(seconds(1), [&] { order += 'a'; });
    const Handle b = clock.after(seconds(1), [&] { order += 'b'; });
    clock.advance(seconds(1));
    EXPECT_EQ(order, "ab");
}

TEST(VirtualClock, AJumpRunsNothingUntilTheNextAdvance) {
    VirtualClock clock;
    int runs = 0;
    const Handle timer = clock.after(seconds(1), [&] { ++runs; });
    clock.jump(seconds(5));
    EXPECT_EQ(runs, 0);
    clock.settle();
    EXPECT_EQ(runs, 1);
    EXPECT_EQ(clock.now() - Instant(), seconds(5));
}

TEST(VirtualClock, OneTimerMayEndAnother) {
    VirtualClock clock;
    int runs = 0;
    Handle other;
    const Handle timer = clock.after(seconds(1), [&] { other.reset(); });
    other = clock.after(seconds(1), [&] { ++runs; });
    clock.advance(seconds(2));
    EXPECT_EQ(runs, 0);
}

TEST(Handle, EndsOnceAndMovesItsDuty) {
    int ends = 0;
    {
        Handle first([&] { ++ends; });
        Handle second = std::move(first);
        EXPECT_FALSE(static_cast<bool>(first)); // NOLINT(bugprone-use-after-move): empty by contract
        EXPECT_TRUE(static_cast<bool>(second));
        second.reset();
        second.reset();
        EXPECT_EQ(ends, 1);
    }
    EXPECT_EQ(ends, 1);
    Handle third([&] { ++ends; });
    third = Handle();
    EXPECT_EQ(ends, 2);
}

TEST(Signal, TellsInTheOrderOfSubscription) {
    const Signal<int> signal;
    std::string seen;
    auto told = Signal<int>();
    const Handle a = told.subscribe([&](int value) { seen += "a" + std::to_string(value); });
    const Handle b = told.subscribe([&](int value) { seen += "b" + std::to_string(value); });
    told.emit(1);
    EXPECT_EQ(seen, "a1b1");
}

TEST(Signal, AnObserverThatEndedMeanwhileIsNotToldAndANewOneNextTime) {
    Signal<> signal;
    std::string seen;
    Handle b;
    Handle c;
    const Handle a = signal.subscribe([&] {
        seen += 'a';
        b.reset();
        if (!c) {
            c = signal.subscribe([&] { seen += 'c'; });
        }
    });
    b = signal.subscribe([&] { seen += 'b'; });
    signal.emit();
    EXPECT_EQ(seen, "a");
    signal.emit();
    EXPECT_EQ(seen, "aac");
}

TEST(Signal, AnObserverMayEndItselfAndASubscriptionMayOutliveTheSignal) {
    int told = 0;
    Handle own;
    {
        Signal<> signal;
        own = signal.subscribe([&] {
            ++told;
            own.reset();
        });
        signal.emit();
        signal.emit();
        own = signal.subscribe([&] { ++told; });
    }
    own.reset();
    EXPECT_EQ(told, 1);
}

TEST(SerialQueue, RunsOneAfterTheOtherInTheOrderOfSubmission) {
    std::vector<int> order;
    SerialQueue queue;
    for (int i = 0; i < 1000; ++i) {
        queue.submit([&order, i] { order.push_back(i); });
    }
    queue.drain();
    ASSERT_EQ(order.size(), 1000U);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST(SerialQueue, RunsOffTheThreadThatSubmits) {
    SerialQueue queue;
    std::thread::id ran;
    queue.submit([&] { ran = std::this_thread::get_id(); });
    queue.drain();
    EXPECT_NE(ran, std::thread::id());
    EXPECT_NE(ran, std::this_thread::get_id());
}

TEST(SerialQueue, ItsEndWaitsForWhatWasSubmitted) {
    std::promise<void> mayGo;
    std::atomic<int> runs{0};
    std::thread release;
    {
        SerialQueue queue;
        queue.submit([&] { mayGo.get_future().wait(); });
        queue.submit([&] { ++runs; });
        release = std::thread([&] { mayGo.set_value(); });
    }
    release.join();
    EXPECT_EQ(runs, 1);
}

TEST(Dates, TheReferenceIsTheFirstMomentOf2001) {
    EXPECT_EQ(toFileDate(WallTime(std::chrono::sys_days(std::chrono::year(2001) / 1 / 1))), 0.0);
    EXPECT_EQ(toFileDate(WallTime(std::chrono::sys_days(std::chrono::year(1970) / 1 / 1))), -978307200.0);
    EXPECT_EQ(fromFileDate(0.5) - fromFileDate(0), seconds(0.5));
}

// A double of this century is coarser than a nanosecond, so nothing of it is lost on the way.
TEST(Dates, AnyDoubleComesBackAsTheVerySameDouble) {
    std::mt19937_64 random(20010101);
    std::uniform_real_distribution<double> moment(4'194'304.0 * 2, 4e9);
    for (int i = 0; i < 200'000; ++i) {
        const double date = moment(random);
        ASSERT_EQ(toFileDate(fromFileDate(date)), date);
        ASSERT_EQ(toFileDate(fromFileDate(-date)), -date);
    }
}

TEST(Dates, AMomentLosesNoMoreThanTheDoublesOwnRounding) {
    std::mt19937_64 random(7);
    std::uniform_int_distribution<std::int64_t> moment(0, 4'000'000'000'000'000'000);
    for (int i = 0; i < 100'000; ++i) {
        const WallTime time{Duration(moment(random))};
        const double date = toFileDate(time);
        const double step = std::nextafter(std::abs(date), INFINITY) - std::abs(date);
        const double lost = std::abs(inSeconds(fromFileDate(date) - time));
        ASSERT_LE(lost, step + 1e-9);
    }
}

TEST(Dates, IdentifiersAreUpperCaseWithoutBracesAndNew) {
    const QString first = newUuid();
    EXPECT_TRUE(QRegularExpression("^[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}$")
                    .match(first)
                    .hasMatch())
        << first.toStdString();
    EXPECT_NE(newUuid(), first);
}

TEST(Dates, ADayChangesAtMidnight) {
    using namespace std::chrono;
    const WallTime midnight{sys_days(2026y / March / 1)};
    EXPECT_EQ(dayKey(midnight), "2026-03-01");
    EXPECT_EQ(dayKey(midnight - 1ns), "2026-02-28");
    EXPECT_EQ(dayKey(WallTime{sys_days(1999y / December / 31)}), "1999-12-31");
}

} // namespace
