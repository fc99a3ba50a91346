// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/atspi/AtspiFieldAccess.h"

#include <algorithm>

namespace lorvane {

namespace {

/// An application may be starting still, or not know yet that its events are wanted.
constexpr Duration searchRest = std::chrono::milliseconds(250);

} // namespace

AccessibleRef accessibleOf(const FieldElement& element) {
    if (element.reference()) {
        return *std::static_pointer_cast<const AccessibleRef>(element.reference());
    }
    const qsizetype slash = element.identity().indexOf(QLatin1Char('/'));
    return {element.identity().left(slash), element.identity().mid(slash)};
}

AtspiFieldAccess::AtspiFieldAccess(AtspiBus& bus, AccessibilitySwitch& accessibilitySwitch,
                                   const Workspace& workspace, Clock& clock)
    : bus_(bus), switch_(accessibilitySwitch), workspace_(workspace), clock_(clock),
      search_(bus, clock, patience_), reader_(bus, clock, patience_),
      events_(bus.subscribeFocus([this](const FocusEvent& event) { handle(event); })),
      connection_(bus.subscribeConnection([this] { connectionChanged(); })) {
    connectionChanged();
}

QCoro::Task<std::optional<FieldElement>> AtspiFieldAccess::focusedElement(ProcessId process,
                                                                          TaskScope scope) {
    const Instant end = deadline();
    const auto found = co_await findFocus(process, end, scope);
    if (!found) {
        co_return std::nullopt;
    }
    co_return FieldElement(found->identity(), std::make_shared<const AccessibleRef>(*found));
}

QCoro::Task<std::optional<FieldReading>> AtspiFieldAccess::read(FieldElement element, TaskScope scope) {
    const AccessibleRef field = accessibleOf(element);
    if (field.isNull() || patience_.isAside(field.bus, clock_.now())) {
        co_return std::nullopt;
    }
    const Instant end = deadline();
    auto reading = co_await reader_.read(field, end, scope);
    co_return reading;
}

void AtspiFieldAccess::requestManualAccessibility(ProcessId) { switch_.switchOn(); }

QCoro::Task<bool> AtspiFieldAccess::isSecureEventInputEnabled(TaskScope scope) {
    const auto front = workspace_.frontmostApplication();
    if (!front) {
        co_return false;
    }
    const Instant end = deadline();
    const auto field = co_await findFocus(front->processId, end, scope);
    if (!field) {
        co_return false;
    }
    const Duration bound = std::max(end - clock_.now(), Duration::zero());
    const auto asked = bus_.call(*field, atspi::accessibleInterface, QStringLiteral("GetRole"), {}, bound);
    const auto role = co_await asked.wait(scope);
    co_return role.number() == static_cast<qint64>(atspi::rolePassword);
}

QCoro::Task<std::optional<AccessibleRef>> AtspiFieldAccess::findFocus(ProcessId process, Instant deadline,
                                                                      TaskScope scope) {
    if (process <= 0) {
        co_return std::nullopt;
    }
    const QStringList applications = tracker_.applications();
    for (const auto& bus : applications) {
        const ProcessId owner = co_await bus_.processOf(bus, scope);
        const auto held = tracker_.focusOf(bus);
        if (owner != process || !held) {
            continue;
        }
        const auto focused = co_await stillFocused(*held, deadline, scope);
        if (!focused) {
            co_return std::nullopt;
        }
        if (*focused) {
            co_return held;
        }
    }
    const auto found = co_await search(process, deadline, scope);
    co_return found;
}

QCoro::Task<std::optional<AccessibleRef>> AtspiFieldAccess::search(ProcessId process, Instant deadline,
                                                                   TaskScope scope) {
    const auto last = searched_.constFind(process);
    if (last != searched_.constEnd() && clock_.now() < last->until) {
        co_return last->found;
    }
    const auto found = co_await search_.find(process, deadline, scope);
    Searched result;
    result.until = clock_.now() + searchRest;
    if (found) {
        result.found = found->field;
    }
    if (found && found->isEditable) {
        tracker_.remember(found->field);
    } else {
        searched_.insert(process, result);
    }
    co_return result.found;
}

QCoro::Task<std::optional<bool>> AtspiFieldAccess::stillFocused(AccessibleRef field, Instant deadline,
                                                                TaskScope scope) {
    if (patience_.isAside(field.bus, clock_.now())) {
        co_return std::nullopt;
    }
    const Duration bound = std::max(deadline - clock_.now(), Duration::zero());
    const auto asked = bus_.call(field, atspi::accessibleInterface, QStringLiteral("GetState"), {}, bound);
    // Whoever asks for the focused field mostly reads it next.
    reader_.askAhead(field, bound);
    const auto reply = co_await asked.wait(scope);
    reader_.endAhead();
    if (reply.timedOut()) {
        patience_.putAside(field.bus, clock_.now());
        co_return std::nullopt;
    }
    const auto states = reply.states();
    const bool focused = states && states->has(atspi::stateFocused) && !states->has(atspi::stateDefunct);
    if (!focused && tracker_.focusOf(field.bus) == field) {
        tracker_.dropFocus(field.bus);
    }
    co_return focused;
}

void AtspiFieldAccess::awaitAnswer(const QString& bus) {
    awaited_.start([this, bus](TaskScope scope) -> QCoro::Task<void> {
        const AccessibleRef root{bus, atspi::rootPath};
        const auto asked = bus_.property(root, atspi::applicationInterface, QStringLiteral("ToolkitName"),
                                         PatienceList::rest);
        const auto reply = co_await asked.wait(scope);
        if (!reply.timedOut()) {
            patience_.heardFrom(bus);
        }
    });
}

void AtspiFieldAccess::handle(const FocusEvent& event) {
    const ProcessId process = bus_.knownProcessOf(event.source.bus);
    patience_.heardFrom(event.source.bus);
    tracker_.handle(event);
    if (process != 0) {
        searched_.remove(process);
    } else {
        searched_.clear();
    }
}

void AtspiFieldAccess::connectionChanged() {
    tracker_ = FocusTracker();
    searched_.clear();
    if (bus_.isConnected()) {
        firstLook_ = startTask([this](TaskScope scope) { return lookOnce(scope); });
    }
}

QCoro::Task<void> AtspiFieldAccess::lookOnce(TaskScope scope) {
    if (const auto front = workspace_.frontmostApplication()) {
        const Instant end = deadline();
        const auto found = co_await findFocus(front->processId, end, scope);
        Q_UNUSED(found)
    }
}

Instant AtspiFieldAccess::deadline() const { return clock_.now() + AtspiBus::callBound; }

} // namespace lorvane
