// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/x11/X11KeyTable.h"

#include <cstdint>
#include <vector>

namespace lorvane {

using XDeviceId = std::uint16_t;

/// The modifier keys that are down on the keyboards of the user, as far as events told.
class HeldKeys {
 public:
    struct Held {
        XDeviceId device;
        XKeyCode key;
        std::uint32_t mask;
        /// Tells one press from the next of the same key.
        std::uint64_t press;
    };

    /// True when the key was up on every keyboard before.
    bool press(XDeviceId device, XKeyCode key, std::uint32_t mask);
    /// True when the key is up on every keyboard now; also when nothing was known of its press.
    bool release(XDeviceId device, XKeyCode key);
    /// Ends exactly that press. True when it had not ended yet and the key is up on every keyboard now.
    bool endPress(const Held& held);

    [[nodiscard]] const std::vector<Held>& all() const { return held_; }
    /// The bits of every key that is down.
    [[nodiscard]] std::uint32_t flags() const;

 private:
    [[nodiscard]] bool isDown(XKeyCode key) const;

    std::vector<Held> held_;
    std::uint64_t lastPress_ = 0;
};

} // namespace lorvane
