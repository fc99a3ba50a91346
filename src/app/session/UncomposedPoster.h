// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/ibus/IbusPoster.h"

namespace lorvane {

/// A way of typing by keys, closed while the user composes with IBus: the keys would go into what is
/// composed. Main thread.
class UncomposedPoster final : public FragmentPoster {
 public:
    UncomposedPoster(FragmentPoster& keys, IbusPoster& inputMethod)
        : keys_(keys), inputMethod_(inputMethod) {}

    [[nodiscard]] QString name() const override { return keys_.name(); }
    [[nodiscard]] bool takesLineBreaks() const override { return keys_.takesLineBreaks(); }
    QCoro::Task<bool> canPost(PostingTarget target, TaskScope scope) override;
    QCoro::Task<PostOutcome> post(PostingTarget target, QString text, TaskScope scope) override;
    void finish() override { keys_.finish(); }

 private:
    FragmentPoster& keys_;
    IbusPoster& inputMethod_;
};

} // namespace lorvane
