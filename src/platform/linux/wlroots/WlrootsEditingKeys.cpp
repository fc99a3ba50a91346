// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/wlroots/WlrootsEditingKeys.h"

#include "platform/linux/wlroots/CommandKeys.h"

namespace lorvane {

void WlrootsEditingKeys::press(EditingKey key) {
    if (keyboard_.useKeymap(commandKeys::keymap())) {
        keyboard_.holdModifiers(0);
        keyboard_.tap(key == EditingKey::rightArrow ? commandKeys::right : commandKeys::backSpace);
        keyboard_.flush();
    }
}

} // namespace lorvane
