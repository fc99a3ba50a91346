// SPDX-License-Identifier: GPL-3.0-or-later
#include "input/FieldProber.h"

namespace lorvane {

namespace {
constexpr Duration pollPeriod = std::chrono::milliseconds(5);
} // namespace

QCoro::Task<std::optional<FieldElement>> FieldProber::focusedElementOfProcess(ProcessId process,
                                                                              TaskScope scope) {
    std::optional<FieldElement> element = co_await fields_.focusedElement(process, scope);
    if (element || !manualAccessibilityAsked_.insert(process).second) {
        co_return element;
    }
    fields_.requestManualAccessibility(process);
    element = co_await fields_.focusedElement(process, scope);
    co_return element;
}

QCoro::Task<std::optional<FieldProbe>> FieldProber::probeField(FieldElement element, TaskScope scope) {
    const std::optional<FieldReading> reading = co_await fields_.read(element, scope);
    co_return lorvane::probeField(reading);
}

QCoro::Task<std::optional<TypingFieldState>> FieldProber::typingFieldState(TypingField field,
                                                                           TaskScope scope) {
    const auto front = workspace_.frontmostApplication();
    if (!front || front->processId != field.target) {
        co_return std::nullopt;
    }
    const std::optional<FieldElement> focused = co_await fields_.focusedElement(field.target, scope);
    if (!focused || !(*focused == field.element)) {
        co_return std::nullopt;
    }
    const std::optional<FieldProbe> probe = co_await probeField(field.element, scope);
    if (!probe) {
        co_return std::nullopt;
    }
    co_return TypingFieldState{field.element, probe->length, probe->caret};
}

QCoro::Task<bool> FieldProber::waitForFieldLength(TypingField field, qint64 wanted, Duration timeout,
                                                  TaskScope scope) {
    const Instant deadline = clock_.now() + timeout;
    while (clock_.now() < deadline) {
        const std::optional<TypingFieldState> state = co_await typingFieldState(field, scope);
        if (state && state->length == wanted) {
            co_return true;
        }
        co_await sleep(clock_, pollPeriod, scope);
    }
    co_return false;
}

} // namespace lorvane
