// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Task.h"
#include "core/FragmentPoster.h"
#include "platform/linux/wlroots/InputMethod.h"

#include <memory>

namespace lorvane {

/// Types as the input method of the seat: whole characters of any kind, whatever the layout and whatever keys
/// are held. It is that method only from the first question of a take until its typing is over, so that an
/// input method that the user starts is not turned away in between; while the user has one running, this way
/// is not offered. Main thread.
class InputMethodPoster final : public FragmentPoster {
 public:
    InputMethodPoster(WaylandConnection& connection, WaylandSeat& seat, Clock& clock);
    InputMethodPoster(const InputMethodPoster&) = delete;
    InputMethodPoster& operator=(const InputMethodPoster&) = delete;

    [[nodiscard]] QString name() const override { return QStringLiteral("input method"); }
    [[nodiscard]] bool takesLineBreaks() const override { return false; }
    /// Waits until the field answers as a text field does; Qt 6.4 never does, nor do windows of XWayland.
    QCoro::Task<bool> canPost(PostingTarget target, TaskScope scope) override;
    QCoro::Task<PostOutcome> post(PostingTarget target, QString text, TaskScope scope) override;
    void finish() override { method_.reset(); }

    /// The compositor has input methods of this kind.
    [[nodiscard]] bool isOffered() const;

 private:
    bool make();
    [[nodiscard]] bool isReady() const;
    /// Comes back when `done` says so, at the latest after `bound`.
    QCoro::Task<void> waitFor(std::function<bool()> done, Duration bound, TaskScope scope);

    WaylandConnection& connection_;
    WaylandSeat& seat_;
    Clock& clock_;
    WaylandOwned<zwp_input_method_manager_v2> manager_;
    std::unique_ptr<InputMethod> method_;
    Handle seatChanged_;
};

} // namespace lorvane
