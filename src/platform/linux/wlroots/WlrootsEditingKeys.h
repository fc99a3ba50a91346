// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/EditingKeys.h"
#include "platform/linux/wlroots/VirtualKeyboard.h"

#include <functional>
#include <utility>

namespace lorvane {

/// By a keyboard of our own, which no modifier of the user's reaches. Main thread.
class WlrootsEditingKeys final : public EditingKeys {
 public:
    /// `held`: the modifiers that are known to be down. A compositor of this kind tells a program without the
    /// focus of no others.
    WlrootsEditingKeys(VirtualKeyboard& keyboard, std::function<std::uint32_t()> held)
        : keyboard_(keyboard), held_(std::move(held)) {}

    [[nodiscard]] std::uint32_t modifierFlags() override { return held_(); }
    [[nodiscard]] bool canPost() override { return keyboard_.isOffered(); }
    void press(EditingKey key) override;

 private:
    VirtualKeyboard& keyboard_;
    std::function<std::uint32_t()> held_;
};

} // namespace lorvane
