// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/kde/KdeEditingKeys.h"

#include <linux/input-event-codes.h>

namespace lorvane {

void KdeEditingKeys::press(EditingKey key) {
    const std::uint32_t code = key == EditingKey::rightArrow ? KEY_RIGHT : KEY_BACKSPACE;
    input_.liftModifiers();
    input_.key(code, true);
    input_.key(code, false);
    input_.flush();
}

} // namespace lorvane
