// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/PasteWatch.h"

#include <algorithm>

namespace lorvane {

namespace {

/// Most programs show a pasted text in this time; those that do not are asked less often then.
constexpr Duration soon = std::chrono::milliseconds(100);
constexpr Duration betweenFirstReads = std::chrono::milliseconds(5);
constexpr Duration betweenReads = std::chrono::milliseconds(50);

} // namespace

QCoro::Task<std::optional<PasteWatch::Before>> PasteWatch::look(ProcessId target, TaskScope scope) {
    const auto element = co_await fields_.focusedElement(target, scope);
    if (!element) {
        co_return std::nullopt;
    }
    const TypingField field{target, *element};
    const auto state = co_await prober_.typingFieldState(field, scope);
    if (!state) {
        co_return std::nullopt;
    }
    co_return Before{field, state->length, state->caret};
}

QCoro::Task<PasteSight> PasteWatch::follow(std::optional<Before> before, qint64 units, Duration patience,
                                           TaskScope scope) {
    const Instant begun = clock_.now();
    PasteSight seen = PasteSight::unclear;
    while (before && seen != PasteSight::standing && clock_.now() < begun + patience) {
        seen = co_await sight(*before, units, scope);
        if (seen != PasteSight::standing) {
            const Duration pause = clock_.now() < begun + soon ? betweenFirstReads : betweenReads;
            co_await sleep(clock_, std::min(pause, begun + patience - clock_.now()), scope);
        }
    }
    co_return seen;
}

QCoro::Task<PasteSight> PasteWatch::sight(Before before, qint64 units, TaskScope scope) {
    const auto now = co_await prober_.typingFieldState(before.field, scope);
    if (!now) {
        co_return PasteSight::unclear;
    }
    if (now->caret == before.caret && now->length == before.length) {
        co_return PasteSight::untouched;
    }
    // A selection that was replaced makes the rest shorter.
    const bool isBehind = now->caret == before.caret + units;
    const bool isRestThere = now->length - now->caret <= before.length - before.caret;
    co_return isBehind&& isRestThere ? PasteSight::standing : PasteSight::unclear;
}

} // namespace lorvane
