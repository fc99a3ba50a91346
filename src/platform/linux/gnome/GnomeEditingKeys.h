// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/EditingKeys.h"
#include "platform/linux/gnome/GnomePasteKeys.h"

#include <deque>

namespace lorvane {

/// Single keys by a session that is opened for them and closed soon after the last one. A key waits for held
/// modifiers to be let go, as they cannot be lifted here, and is dropped when they are not. Main thread.
class GnomeEditingKeys final : public EditingKeys {
 public:
    GnomeEditingKeys(RemoteDesktopKeys& keys, Clock& clock, GnomeKeyboard keyboard)
        : keys_(keys), clock_(clock), keyboard_(std::move(keyboard)) {}

    [[nodiscard]] std::uint32_t modifierFlags() override { return keyboard_.heldModifiers(); }
    [[nodiscard]] bool canPost() override { return keys_.isOffered(); }
    void press(EditingKey key) override;
    [[nodiscard]] bool isPending() override { return pressing_.isRunning(); }

 private:
    QCoro::Task<void> pressQueued(TaskScope scope);
    QCoro::Task<bool> awaitBareKeyboard(TaskScope scope);

    RemoteDesktopKeys& keys_;
    Clock& clock_;
    GnomeKeyboard keyboard_;
    std::deque<int> queue_;
    Handle closing_;
    TaskHandle pressing_;
};

} // namespace lorvane
