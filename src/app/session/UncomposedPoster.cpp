// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/session/UncomposedPoster.h"

namespace lorvane {

QCoro::Task<bool> UncomposedPoster::canPost(PostingTarget target, TaskScope scope) {
    const bool isComposing = co_await inputMethod_.isUserComposing(scope);
    if (isComposing) {
        co_return false;
    }
    const bool offered = co_await keys_.canPost(std::move(target), std::move(scope));
    co_return offered;
}

QCoro::Task<PostOutcome> UncomposedPoster::post(PostingTarget target, QString text, TaskScope scope) {
    return keys_.post(std::move(target), std::move(text), std::move(scope));
}

} // namespace lorvane
