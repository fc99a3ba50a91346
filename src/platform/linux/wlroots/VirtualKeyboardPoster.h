// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/FragmentPoster.h"
#include "platform/linux/wlroots/VirtualKeyboard.h"

namespace lorvane {

/// Types by a keyboard of our own, with a keymap made for each fragment. No emoji (FragmentKeymap). Not for
/// windows of XWayland, which reads the next keymap before the keys of this one. Main thread.
class VirtualKeyboardPoster final : public FragmentPoster {
 public:
    VirtualKeyboardPoster(VirtualKeyboard& keyboard, WaylandConnection& connection)
        : keyboard_(keyboard), connection_(connection) {}
    VirtualKeyboardPoster(const VirtualKeyboardPoster&) = delete;
    VirtualKeyboardPoster& operator=(const VirtualKeyboardPoster&) = delete;

    [[nodiscard]] QString name() const override { return QStringLiteral("virtual keyboard"); }
    [[nodiscard]] bool takesLineBreaks() const override { return false; }
    QCoro::Task<bool> canPost(PostingTarget target, TaskScope scope) override;
    QCoro::Task<PostOutcome> post(PostingTarget target, QString text, TaskScope scope) override;
    void finish() override;

 private:
    VirtualKeyboard& keyboard_;
    WaylandConnection& connection_;
    /// The keymap in force is one of ours for a few characters.
    bool isBorrowed_ = false;
};

} // namespace lorvane
