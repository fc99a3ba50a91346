// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/EditingKeys.h"
#include "platform/linux/kde/FakeInput.h"
#include "platform/linux/kde/KdeKeyboard.h"

namespace lorvane {

/// Single keys by fake input; they stand on the same place in every layout. Main thread.
class KdeEditingKeys final : public EditingKeys {
 public:
    KdeEditingKeys(FakeInput& input, KdeKeyboard keyboard) : input_(input), keyboard_(std::move(keyboard)) {}

    [[nodiscard]] std::uint32_t modifierFlags() override { return keyboard_.heldModifiers(); }
    [[nodiscard]] bool canPost() override { return input_.isThere(); }
    void press(EditingKey key) override;

 private:
    FakeInput& input_;
    KdeKeyboard keyboard_;
};

} // namespace lorvane
