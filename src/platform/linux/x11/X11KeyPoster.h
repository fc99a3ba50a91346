// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "core/FragmentPoster.h"
#include "platform/linux/x11/TypingLayout.h"
#include "platform/linux/x11/TypingPlan.h"
#include "platform/linux/x11/WindowPing.h"

#include <functional>

namespace lorvane {

/// Types by synthetic keys into whatever has the keyboard: the layout's own keys, and for what it has not,
/// keys that it leaves without a symbol. Main thread.
class X11KeyPoster final : public FragmentPoster {
 public:
    /// How long an application may take, after it has answered, to know keys by new symbols. Zero when it
    /// reads them in the order of its events: then its answer is not waited for either.
    using SettleTime = std::function<Duration(const RunningApplication&)>;

    X11KeyPoster(X11Connection& connection, Clock& clock, TypingLayout& layout, SettleTime settleTime);
    X11KeyPoster(const X11KeyPoster&) = delete;
    X11KeyPoster& operator=(const X11KeyPoster&) = delete;
    ~X11KeyPoster() override = default;

    [[nodiscard]] QString name() const override { return QStringLiteral("keys"); }
    [[nodiscard]] bool takesLineBreaks() const override { return false; }
    QCoro::Task<bool> canPost(PostingTarget target, TaskScope scope) override;
    QCoro::Task<PostOutcome> post(PostingTarget target, QString text, TaskScope scope) override;
    void finish() override;

 private:
    /// Puts symbols on spare keys and waits until they are known.
    QCoro::Task<void> lend(std::vector<KeyChange> changes, bool afterTyping, Duration settleTime,
                           TaskScope scope);
    QCoro::Task<void> settle(Duration time, TaskScope scope);
    void type(const std::vector<KeyStroke>& strokes, const CharacterKeys& layout,
              const KeyboardMoment& moment);

    X11Connection& connection_;
    Clock& clock_;
    SettleTime settleTime_;
    TypingLayout& layout_;
    WindowPing ping_;
};

} // namespace lorvane
