// SPDX-License-Identifier: GPL-3.0-or-later
#include "input/testing/FakeFieldAccess.h"

namespace lorvane {

QCoro::Task<std::optional<FieldElement>> FakeFieldAccess::focusedElement(ProcessId process, TaskScope scope) {
    ++focusQueries;
    if (delay > Duration::zero()) {
        co_await sleep(clock_, delay, scope);
    }
    const auto found = focused_.find(process);
    if (found == focused_.end()) {
        co_return std::nullopt;
    }
    co_return FieldElement(found->second);
}

QCoro::Task<std::optional<FieldReading>> FakeFieldAccess::read(FieldElement element, TaskScope scope) {
    if (delay > Duration::zero()) {
        co_await sleep(clock_, delay, scope);
    }
    const auto found = fields_.find(element.identity());
    if (found == fields_.end() || !found->second.text) {
        co_return std::nullopt;
    }
    const Field& field = found->second;
    co_return FieldReading{field.text->size(), field.caret, field.text->mid(field.caret), field.multiLine};
}

void FakeFieldAccess::requestManualAccessibility(ProcessId process) {
    manualAccessibilityRequests.push_back(process);
    const auto found = shownWhenAsked_.find(process);
    if (found != shownWhenAsked_.end()) {
        focus(process, found->second);
    }
}

QCoro::Task<bool> FakeFieldAccess::isSecureEventInputEnabled(TaskScope scope) {
    if (delay > Duration::zero()) {
        co_await sleep(clock_, delay, scope);
    }
    co_return secure;
}

FieldElement FakeFieldAccess::focus(ProcessId process, const QString& identity) {
    fields_.try_emplace(identity, Field{QString(""), 0});
    focused_[process] = identity;
    return FieldElement(identity);
}

} // namespace lorvane
