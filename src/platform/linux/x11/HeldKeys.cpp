// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/HeldKeys.h"

#include <algorithm>

namespace lorvane {

bool HeldKeys::press(XDeviceId device, XKeyCode key, std::uint32_t mask) {
    const bool wasDown = isDown(key);
    std::erase_if(held_, [=](const Held& held) { return held.device == device && held.key == key; });
    held_.push_back({device, key, mask, ++lastPress_});
    return !wasDown;
}

bool HeldKeys::release(XDeviceId device, XKeyCode key) {
    std::erase_if(held_, [=](const Held& held) { return held.device == device && held.key == key; });
    return !isDown(key);
}

bool HeldKeys::endPress(const Held& ended) {
    const auto count = std::erase_if(held_, [&](const Held& held) { return held.press == ended.press; });
    return count > 0 && !isDown(ended.key);
}

std::uint32_t HeldKeys::flags() const {
    std::uint32_t all = 0;
    for (const Held& held : held_) {
        all |= held.mask;
    }
    return all;
}

bool HeldKeys::isDown(XKeyCode key) const {
    return std::any_of(held_.begin(), held_.end(), [key](const Held& held) { return held.key == key; });
}

} // namespace lorvane
