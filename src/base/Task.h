// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"

#include <qcoro/qcorotask.h>

#include <coroutine>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <stop_token>

/// Owned, cancellable tasks over QCoro. A task is a coroutine that is given a TaskScope and belongs to a
/// TaskHandle (or a TaskGroup) that is a member of the object it works for. Everything here is for the main
/// thread.
///
/// Two things end a task early:
/// - `cancel()`: every wait that was given the plain scope ends at once by throwing TaskCancelled; a wait
/// that was
///   given `scope.shielded()` goes on to its end, for steps that have to finish all the same.
/// - the end of its owner: every wait ends at once, shielded ones too.
/// The throw resumes the coroutine inside `cancel()` or the destructor, so a handle is declared after the
/// members that its task uses. TaskCancelled never leaves the task.
namespace lorvane {

struct TaskCancelled {};

namespace detail {
struct TaskState {
    std::stop_source cancelled;
    std::stop_source abandoned;
    bool running = true;
};
} // namespace detail

/// A task's view of itself; copied freely, passed by value to every operation that waits.
class TaskScope {
 public:
    /// A scope that nothing ends.
    TaskScope() : TaskScope(std::make_shared<detail::TaskState>(), false) {}
    TaskScope(std::shared_ptr<detail::TaskState> state, bool shielded)
        : state_(std::move(state)), shielded_(shielded) {}

    /// Cancelled or abandoned; the same for the shielded and the plain scope.
    [[nodiscard]] bool isCancelled() const { return state_->cancelled.stop_requested(); }
    /// The scope for steps that are not cut short by a cancellation.
    [[nodiscard]] TaskScope shielded() const { return {state_, true}; }
    /// What ends the waits of this scope.
    [[nodiscard]] std::stop_token token() const {
        return shielded_ ? state_->abandoned.get_token() : state_->cancelled.get_token();
    }

 private:
    std::shared_ptr<detail::TaskState> state_;
    bool shielded_;
};

/// Owns one running task and ends it with itself.
class [[nodiscard]] TaskHandle {
 public:
    TaskHandle() = default;
    explicit TaskHandle(std::shared_ptr<detail::TaskState> state) : state_(std::move(state)) {}
    TaskHandle(TaskHandle&&) noexcept = default;
    TaskHandle& operator=(TaskHandle&& other) noexcept;
    TaskHandle(const TaskHandle&) = delete;
    TaskHandle& operator=(const TaskHandle&) = delete;
    ~TaskHandle() { abandon(); }

    /// Asks the task to end; it may still run its shielded steps.
    void cancel();
    [[nodiscard]] bool isRunning() const { return state_ && state_->running; }

 private:
    void abandon();
    std::shared_ptr<detail::TaskState> state_;
};

using TaskBody = std::function<QCoro::Task<void>(TaskScope)>;

/// Runs `body` up to its first wait and returns its owner. `body` lives as long as the task.
[[nodiscard]] TaskHandle startTask(TaskBody body);

/// Tasks that nobody cancels one by one; they end with the group.
class TaskGroup {
 public:
    void start(TaskBody body);
    /// Takes over a running task.
    void adopt(TaskHandle task);
    [[nodiscard]] bool isIdle() const;

 private:
    void dropFinished();
    std::list<TaskHandle> tasks_;
};

namespace detail {

/// The common part of every wait: resumes its coroutine once, by the event or by the scope's token.
class Wait {
 public:
    explicit Wait(const TaskScope& scope) : token_(scope.token()) {}
    /// Compilers move an awaiter into the coroutine's frame; that is only done before it waits.
    Wait(Wait&& other) noexcept : token_(std::move(other.token_)) {}
    Wait(const Wait&) = delete;
    Wait& operator=(const Wait&) = delete;

 protected:
    ~Wait() = default;
    void suspend(std::coroutine_handle<> coroutine) {
        coroutine_ = coroutine;
        onStop_.emplace(token_, [this] { resume(); });
    }
    void resume() {
        if (const auto coroutine = std::exchange(coroutine_, nullptr)) {
            coroutine.resume();
        }
    }
    void throwIfEnded() const {
        if (token_.stop_requested()) {
            throw TaskCancelled();
        }
    }
    [[nodiscard]] bool ended() const { return token_.stop_requested(); }

 private:
    std::stop_token token_;
    std::coroutine_handle<> coroutine_;
    std::optional<std::stop_callback<std::function<void()>>> onStop_;
};

class SleepWait final : public Wait {
 public:
    SleepWait(Clock& clock, Duration delay, const TaskScope& scope)
        : Wait(scope), clock_(clock), delay_(delay) {}
    [[nodiscard]] bool await_ready() const { return ended(); }
    void await_suspend(std::coroutine_handle<> coroutine) {
        timer_ = clock_.after(delay_, [this] { resume(); });
        suspend(coroutine);
    }
    void await_resume() const { throwIfEnded(); }

 private:
    Clock& clock_;
    Duration delay_;
    Handle timer_;
};

} // namespace detail

/// `co_await sleep(clock, delay, scope)`: comes back after `delay`, or throws TaskCancelled when the scope
/// ends.
[[nodiscard]] inline detail::SleepWait sleep(Clock& clock, Duration delay, const TaskScope& scope) {
    return {clock, delay, scope};
}

/// A value that arrives once, later: the bridge from callbacks to a waiting task. Copies share the value. One
/// waiter.
template <typename T>
class Completion {
    struct State {
        std::optional<T> value;
        std::function<void()> wake;
    };

    class ValueWait final : public detail::Wait {
     public:
        ValueWait(std::shared_ptr<State> state, const TaskScope& scope)
            : Wait(scope), state_(std::move(state)) {}
        ValueWait(ValueWait&&) noexcept = default;
        ~ValueWait() {
            if (state_) {
                state_->wake = nullptr;
            }
        }
        [[nodiscard]] bool await_ready() const { return ended() || state_->value.has_value(); }
        void await_suspend(std::coroutine_handle<> coroutine) {
            state_->wake = [this] { resume(); };
            suspend(coroutine);
        }
        T await_resume() {
            throwIfEnded();
            return std::move(*state_->value);
        }

     private:
        std::shared_ptr<State> state_;
    };

 public:
    /// The first value counts; later ones are dropped. Resumes the waiter inside the call.
    void complete(T value) const {
        const auto state = state_;
        if (state->value) {
            return;
        }
        state->value.emplace(std::move(value));
        if (const auto wake = std::exchange(state->wake, nullptr)) {
            wake();
        }
    }
    [[nodiscard]] bool isComplete() const { return state_->value.has_value(); }
    /// `co_await completion.wait(scope)`: the value, or TaskCancelled when the scope ends first.
    [[nodiscard]] ValueWait wait(const TaskScope& scope) const { return {state_, scope}; }

 private:
    std::shared_ptr<State> state_ = std::make_shared<State>();
};

} // namespace lorvane
