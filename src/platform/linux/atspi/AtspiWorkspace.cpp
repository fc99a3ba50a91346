// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/atspi/AtspiWorkspace.h"

namespace lorvane {

AtspiWorkspace::AtspiWorkspace(AtspiBus& bus, Naming naming) : bus_(bus), naming_(std::move(naming)) {
    events_ = bus_.subscribeFocus([this](const FocusEvent& event) { handle(event); });
    goings_ = bus_.subscribeGone([this](const QString& name) { applicationGone(name); });
    connection_ = bus_.subscribeConnection([this] { connectionChanged(); });
    connectionChanged();
}

void AtspiWorkspace::handle(const FocusEvent& event) {
    if (active_.handle(event)) {
        windowChanged();
    }
}

void AtspiWorkspace::applicationGone(const QString& bus) {
    named_.erase(bus);
    if (active_.forget(bus)) {
        windowChanged();
    }
}

void AtspiWorkspace::connectionChanged() {
    if (!bus_.isConnected()) {
        named_.clear();
        active_ = ActiveWindow();
        telling_ = TaskHandle();
        looking_ = TaskHandle();
        set(std::nullopt);
        return;
    }
    looking_ = startTask([this](TaskScope scope) { return look(std::move(scope)); });
}

void AtspiWorkspace::windowChanged() {
    const auto& window = active_.window();
    if (!window) {
        telling_ = TaskHandle();
        set(std::nullopt);
        looking_ = startTask([this](TaskScope scope) { return look(std::move(scope)); });
        return;
    }
    looking_ = TaskHandle();
    if (const auto known = named_.find(window->bus); known != named_.end()) {
        telling_ = TaskHandle();
        set(known->second);
        return;
    }
    telling_ = startTask([this, told = *window](TaskScope scope) { return tellApplication(told, scope); });
}

void AtspiWorkspace::set(std::optional<RunningApplication> application) {
    if (front_ != application) {
        front_ = std::move(application);
        changed_.emit();
    }
}

QCoro::Task<void> AtspiWorkspace::tellApplication(AccessibleRef window, TaskScope scope) {
    const ProcessId process = co_await bus_.processOf(window.bus, scope);
    const AccessibleRef root{window.bus, atspi::rootPath};
    const auto asked = bus_.property(root, atspi::accessibleInterface, QStringLiteral("Name"));
    const auto reply = co_await asked.wait(scope);
    const RunningApplication application = naming_(process, reply.text().value_or(QString()));
    if (process != 0 && !reply.timedOut()) {
        named_[window.bus] = application;
    }
    if (active_.window() == window) {
        set(application);
    }
}

QCoro::Task<void> AtspiWorkspace::look(TaskScope scope) {
    std::vector<AccessibleRef> before(active_.before().begin(), active_.before().end());
    const bool isFound = co_await lookAmong(std::move(before), scope);
    if (!isFound) {
        std::vector<AccessibleRef> all = co_await allWindows(scope);
        co_await lookAmong(std::move(all), scope);
    }
}

QCoro::Task<bool> AtspiWorkspace::lookAmong(std::vector<AccessibleRef> windows, TaskScope scope) {
    std::vector<Completion<AtspiReply>> asked;
    for (const AccessibleRef& window : windows) {
        asked.push_back(bus_.call(window, atspi::accessibleInterface, QStringLiteral("GetState")));
    }
    for (std::size_t i = 0; i < asked.size(); ++i) {
        const auto reply = co_await asked[i].wait(scope);
        const auto states = reply.states();
        if (states && states->has(atspi::stateActive) && !states->has(atspi::stateDefunct)) {
            active_.remember(windows[i]);
            // Not by windowChanged, which would end this very task.
            telling_ =
                startTask([this, told = windows[i]](TaskScope own) { return tellApplication(told, own); });
            co_return true;
        }
    }
    co_return false;
}

QCoro::Task<std::vector<AccessibleRef>> AtspiWorkspace::allWindows(TaskScope scope) {
    const std::vector<AccessibleRef> applications = co_await bus_.applications(scope);
    std::vector<Completion<AtspiReply>> asked;
    for (const AccessibleRef& application : applications) {
        asked.push_back(bus_.call(application, atspi::accessibleInterface, QStringLiteral("GetChildren")));
    }
    std::vector<AccessibleRef> windows;
    for (const auto& question : asked) {
        const auto reply = co_await question.wait(scope);
        if (const auto found = reply.objects()) {
            windows.insert(windows.end(), found->begin(), found->end());
        }
    }
    co_return windows;
}

} // namespace lorvane
