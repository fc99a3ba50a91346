// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/kde/InputMethodV1Poster.h"

namespace lorvane {

QCoro::Task<bool> InputMethodV1Poster::canPost(PostingTarget /*target*/, TaskScope scope) {
    const helper::ContextState state = co_await link_.context(scope);
    co_return state.context != 0 && !state.isSecret;
}

// The context of the moment: one that has come since is the same field after a key, or a field with the
// focus, and whether the text stands where it should is read back.
QCoro::Task<PostOutcome> InputMethodV1Poster::post(PostingTarget /*target*/, QString text, TaskScope scope) {
    const helper::ContextState state = co_await link_.context(scope);
    if (state.context == 0 || state.isSecret) {
        co_return PostOutcome::refused;
    }
    const std::optional<bool> done = co_await link_.commit(state.context, text, scope);
    if (!done) {
        co_return PostOutcome::unknown;
    }
    co_return *done ? PostOutcome::posted : PostOutcome::refused;
}

} // namespace lorvane
