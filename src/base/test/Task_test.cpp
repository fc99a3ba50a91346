// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Task.h"

#include "base/testing/VirtualClock.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

using namespace lorvane;

namespace {

/// Notes what a task did and, by its own end, when the coroutine was gone.
struct Steps {
    std::string seen;
};

struct Gone {
    Steps& steps;
    explicit Gone(Steps& to) : steps(to) {}
    Gone(const Gone&) = delete;
    Gone& operator=(const Gone&) = delete;
    ~Gone() { steps.seen += "~"; }
};

class Tasks : public ::testing::Test {
 protected:
    QCoro::Task<void> napping(TaskScope scope) {
        const Gone gone(steps);
        steps.seen += "a";
        co_await sleep(clock, seconds(1), scope);
        steps.seen += "b";
    }
    QCoro::Task<void> shielding(TaskScope scope) {
        const Gone gone(steps);
        try {
            co_await sleep(clock, seconds(10), scope);
        } catch (const TaskCancelled&) {
            steps.seen += "c";
        }
        const TaskScope shielded = scope.shielded();
        co_await sleep(clock, seconds(1), shielded);
        steps.seen += scope.isCancelled() && shielded.isCancelled() ? "d" : "x";
    }
    QCoro::Task<int> inner(TaskScope scope) {
        const Gone gone(steps);
        co_await sleep(clock, seconds(1), scope);
        co_return 7;
    }
    QCoro::Task<void> nesting(TaskScope scope) {
        const Gone gone(steps);
        const int value = co_await inner(scope);
        steps.seen += std::to_string(value);
    }
    QCoro::Task<void> waiting(Completion<std::string> completion, TaskScope scope) {
        const Gone gone(steps);
        steps.seen += co_await completion.wait(scope);
    }
    QCoro::Task<void> cancellingItself(TaskScope scope) {
        const Gone gone(steps);
        co_await sleep(clock, seconds(1), scope);
        own.cancel();
        steps.seen += "c";
        co_await sleep(clock, seconds(1), scope);
        steps.seen += "x";
    }
    QCoro::Task<void> endingItsOwner(TaskScope scope) {
        const Gone gone(steps);
        co_await sleep(clock, seconds(1), scope);
        owner.reset();
        steps.seen += "c";
        co_await sleep(clock, seconds(1), scope.shielded());
        steps.seen += "x";
    }

    VirtualClock clock;
    Steps steps;
    TaskHandle own;
    std::unique_ptr<TaskHandle> owner;
};

TEST_F(Tasks, RunUpToTheirFirstWaitAtOnceAndThenOnTime) {
    const TaskHandle task = startTask([this](TaskScope scope) { return napping(scope); });
    EXPECT_EQ(steps.seen, "a");
    clock.advance(seconds(0.999));
    EXPECT_TRUE(task.isRunning());
    clock.advance(seconds(0.001));
    EXPECT_EQ(steps.seen, "ab~");
    EXPECT_FALSE(task.isRunning());
}

TEST_F(Tasks, ACancellationEndsTheWaitInsideTheCall) {
    TaskHandle task = startTask([this](TaskScope scope) { return napping(scope); });
    task.cancel();
    EXPECT_EQ(steps.seen, "a~");
    EXPECT_FALSE(task.isRunning());
    EXPECT_EQ(clock.pendingTimers(), 0U);
}

TEST_F(Tasks, ACancellationAfterTheEndDoesNothing) {
    TaskHandle task = startTask([this](TaskScope scope) { return napping(scope); });
    clock.advance(seconds(1));
    task.cancel();
    task.cancel();
    EXPECT_EQ(steps.seen, "ab~");
}

TEST_F(Tasks, TheEndOfTheOwnerEndsTheTask) {
    {
        const TaskHandle task = startTask([this](TaskScope scope) { return napping(scope); });
    }
    EXPECT_EQ(steps.seen, "a~");
    EXPECT_EQ(clock.pendingTimers(), 0U);
}

TEST_F(Tasks, AShieldedWaitGoesOnAfterACancellation) {
    TaskHandle task = startTask([this](TaskScope scope) { return shielding(scope); });
    task.cancel();
    EXPECT_EQ(steps.seen, "c");
    EXPECT_TRUE(task.isRunning());
    clock.advance(seconds(1));
    EXPECT_EQ(steps.seen, "cd~");
    EXPECT_FALSE(task.isRunning());
}

TEST_F(Tasks, TheEndOfTheOwnerEndsAShieldedWait) {
    {
        TaskHandle task = startTask([this](TaskScope scope) { return shielding(scope); });
        task.cancel();
    }
    EXPECT_EQ(steps.seen, "c~");
}

TEST_F(Tasks, AReplacedHandleEndsItsOldTask) {
    TaskHandle task = startTask([this](TaskScope scope) { return napping(scope); });
    task = startTask([this](TaskScope scope) { return napping(scope); });
    EXPECT_EQ(steps.seen, "aa~");
    EXPECT_TRUE(task.isRunning());
}

TEST_F(Tasks, AResultComesThroughANestedCoroutine) {
    const TaskHandle task = startTask([this](TaskScope scope) { return nesting(scope); });
    clock.advance(seconds(1));
    EXPECT_EQ(steps.seen, "~7~");
}

TEST_F(Tasks, ACancellationUnwindsNestedCoroutines) {
    TaskHandle task = startTask([this](TaskScope scope) { return nesting(scope); });
    task.cancel();
    EXPECT_EQ(steps.seen, "~~");
    EXPECT_FALSE(task.isRunning());
}

TEST_F(Tasks, ATaskMayCancelItselfAndEndsAtItsNextWait) {
    own = startTask([this](TaskScope scope) { return cancellingItself(scope); });
    clock.advance(seconds(5));
    EXPECT_EQ(steps.seen, "c~");
    EXPECT_FALSE(own.isRunning());
}

TEST_F(Tasks, ATaskMayEndItsOwnOwner) {
    owner =
        std::make_unique<TaskHandle>(startTask([this](TaskScope scope) { return endingItsOwner(scope); }));
    clock.advance(seconds(5));
    EXPECT_EQ(steps.seen, "c~");
}

TEST_F(Tasks, ACompletionThatIsThereDoesNotWait) {
    const Completion<std::string> completion;
    completion.complete("now");
    const TaskHandle task = startTask([&](TaskScope scope) { return waiting(completion, scope); });
    EXPECT_EQ(steps.seen, "now~");
}

TEST_F(Tasks, ACompletionResumesItsWaiterInsideTheCallAndOnlyOnce) {
    const Completion<std::string> completion;
    const TaskHandle task = startTask([&](TaskScope scope) { return waiting(completion, scope); });
    EXPECT_EQ(steps.seen, "");
    completion.complete("first");
    EXPECT_EQ(steps.seen, "first~");
    completion.complete("second");
    EXPECT_EQ(steps.seen, "first~");
    EXPECT_TRUE(completion.isComplete());
}

TEST_F(Tasks, ACompletionOutlivesACancelledWaiter) {
    const Completion<std::string> completion;
    TaskHandle task = startTask([&](TaskScope scope) { return waiting(completion, scope); });
    task.cancel();
    EXPECT_EQ(steps.seen, "~");
    completion.complete("late");
    EXPECT_EQ(steps.seen, "~");
}

TEST_F(Tasks, AGroupEndsItsTasksWithItself) {
    {
        TaskGroup group;
        group.start([this](TaskScope scope) { return napping(scope); });
        group.start([this](TaskScope scope) { return napping(scope); });
        EXPECT_FALSE(group.isIdle());
    }
    EXPECT_EQ(steps.seen, "aa~~");
}

TEST_F(Tasks, AGroupIsIdleWhenAllHaveEnded) {
    TaskGroup group;
    EXPECT_TRUE(group.isIdle());
    group.start([this](TaskScope scope) { return napping(scope); });
    clock.advance(seconds(1));
    EXPECT_TRUE(group.isIdle());
}

TEST_F(Tasks, AScopeOfItsOwnIsEndedByNothing) {
    const TaskScope scope;
    EXPECT_FALSE(scope.isCancelled());
    EXPECT_FALSE(scope.token().stop_requested());
}

} // namespace
