// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/TypingLayout.h"

namespace lorvane {

TypingLayout::TypingLayout(X11Connection& connection, PostingKeyboard& keyboard)
    : connection_(connection), keyboard_(keyboard), borrowed_(connection),
      watch_(connection, [this](XKeyCode key) { return borrowed_.keys().contains(key); }) {}

bool TypingLayout::refresh() {
    if (!keyboard_.canPost()) {
        return false;
    }
    if (watch_.takeChange() || !keymap_) {
        keymap_ = keyboard_.readKeymap();
        borrowed_.survey();
        characters_.clear();
    }
    return keymap_ && connection_.isAlive();
}

const CharacterKeys& TypingLayout::characters(xkb_layout_index_t group) {
    return characters_.try_emplace(group, keymap_.get(), group, borrowed_.keys().all()).first->second;
}

} // namespace lorvane
