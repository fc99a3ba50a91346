// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Task.h"

namespace lorvane {

namespace {

QCoro::Task<void> runBody(TaskBody body, std::shared_ptr<detail::TaskState> state) {
    try {
        co_await body(TaskScope(state, false));
    } catch (const TaskCancelled&) {
        // The end that was asked for.
    }
    state->running = false;
}

} // namespace

TaskHandle& TaskHandle::operator=(TaskHandle&& other) noexcept {
    if (this != &other) {
        auto previous = std::move(*this);
        state_ = std::move(other.state_);
    }
    return *this;
}

void TaskHandle::cancel() {
    if (const auto state = state_) {
        state->cancelled.request_stop();
    }
}

void TaskHandle::abandon() {
    if (const auto state = std::move(state_)) {
        state->cancelled.request_stop();
        state->abandoned.request_stop();
    }
}

TaskHandle startTask(TaskBody body) {
    auto state = std::make_shared<detail::TaskState>();
    runBody(std::move(body), state);
    return TaskHandle(std::move(state));
}

void TaskGroup::start(TaskBody body) { adopt(startTask(std::move(body))); }

void TaskGroup::adopt(TaskHandle task) {
    dropFinished();
    if (task.isRunning()) {
        tasks_.push_back(std::move(task));
    }
}

bool TaskGroup::isIdle() const {
    for (const auto& task : tasks_) {
        if (task.isRunning()) {
            return false;
        }
    }
    return true;
}

void TaskGroup::dropFinished() {
    tasks_.remove_if([](const TaskHandle& task) { return !task.isRunning(); });
}

} // namespace lorvane
