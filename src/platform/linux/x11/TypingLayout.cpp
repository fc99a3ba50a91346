// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/TypingLayout.h"

namespace lorvane {

TypingLayout::TypingLayout(X11Connection& connection)
    : borrowed_(connection),
      keyboard_(connection, [this](XKeyCode key) { return borrowed_.keys().contains(key); }) {}

bool TypingLayout::refresh() {
    const bool isThere = keyboard_.keymap() != nullptr;
    if (keyboard_.edition() != edition_) {
        edition_ = keyboard_.edition();
        borrowed_.survey();
        characters_.clear();
    }
    return isThere && keyboard_.canPost();
}

const CharacterKeys& TypingLayout::characters(xkb_layout_index_t group) {
    return characters_.try_emplace(group, keyboard_.keymap(), group, borrowed_.keys().all()).first->second;
}

} // namespace lorvane
