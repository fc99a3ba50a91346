// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/x11/BorrowedKeys.h"
#include "platform/linux/x11/CharacterKeys.h"
#include "platform/linux/x11/PostingKeyboard.h"

#include <map>

namespace lorvane {

/// What the keys give now: the layouts, and the spare keys. Kept until the keyboard's map changes; changes of
/// the spare keys do not count. Main thread.
class TypingLayout {
 public:
    explicit TypingLayout(X11Connection& connection);
    TypingLayout(const TypingLayout&) = delete;
    TypingLayout& operator=(const TypingLayout&) = delete;
    ~TypingLayout() = default;

    /// Reads anew what may have changed. False when there is no map to be had.
    [[nodiscard]] bool refresh();
    /// After `refresh`. `group` counts from 0.
    [[nodiscard]] const CharacterKeys& characters(xkb_layout_index_t group);
    [[nodiscard]] PostingKeyboard& keyboard() { return keyboard_; }
    [[nodiscard]] BorrowedKeys& borrowed() { return borrowed_; }

 private:
    BorrowedKeys borrowed_;
    PostingKeyboard keyboard_;
    int edition_ = 0;
    std::map<xkb_layout_index_t, CharacterKeys> characters_;
};

} // namespace lorvane
