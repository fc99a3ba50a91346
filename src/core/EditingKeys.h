// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace lorvane {

enum class EditingKey { rightArrow, deleteBackward };

/// Single keys for the field that has the keyboard. Main thread.
class EditingKeys {
 public:
    virtual ~EditingKeys() = default;

    /// The modifiers that the user holds down now, as bits of `modifierFlag`. What the program itself posts
    /// does not count.
    [[nodiscard]] virtual std::uint32_t modifierFlags() = 0;
    /// Whether keys can be posted at all.
    [[nodiscard]] virtual bool canPost() = 0;
    /// Presses and releases it once, bare: modifiers that the user holds are lifted first, so that it never
    /// acts as a shortcut.
    virtual void press(EditingKey key) = 0;
    /// A key that was asked for may still have to go out: its way is slow, or waits for something.
    [[nodiscard]] virtual bool isPending() { return false; }
};

} // namespace lorvane
