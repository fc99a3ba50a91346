// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/FragmentPoster.h"
#include "platform/linux/kde/HelperLink.h"

namespace lorvane {

/// Types through the input method helper that KWin runs: any character, whatever the layout and whatever is
/// held. Main thread.
class InputMethodV1Poster final : public FragmentPoster {
 public:
    explicit InputMethodV1Poster(HelperLink& link) : link_(link) {}

    [[nodiscard]] QString name() const override { return QStringLiteral("input method (KWin)"); }
    [[nodiscard]] bool takesLineBreaks() const override { return false; }
    QCoro::Task<bool> canPost(PostingTarget target, TaskScope scope) override;
    QCoro::Task<PostOutcome> post(PostingTarget target, QString text, TaskScope scope) override;
    void finish() override {}

 private:
    HelperLink& link_;
};

} // namespace lorvane
