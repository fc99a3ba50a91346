// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Handle.h"

#include <QString>

#include <bitset>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace lorvane {

/// Keys by their codes in linux/input-event-codes.h. Buttons, which begin at 256, are no keys here.
using EvdevKeys = std::bitset<256>;

/// An open key device. Nothing else that listens to it is disturbed: it is never grabbed.
class KeyDevice {
 public:
    virtual ~KeyDevice() = default;
    /// Gives `struct input_event` of linux/input.h, non-blocking; its end or an error means that the device
    /// has gone.
    [[nodiscard]] virtual int descriptor() const = 0;
    /// The events carry the time of the steady clock; otherwise their times mean nothing here.
    [[nodiscard]] virtual bool tellsSteadyTime() const = 0;
    /// The keys that are down now; absent when the device has gone.
    [[nodiscard]] virtual std::optional<EvdevKeys> keysDown() const = 0;
};

/// The key devices of the machine. Main thread.
class KeyDevices {
 public:
    enum class Access {
        granted,
        refused, ///< there are devices, and this user may read none
        none,    ///< there are no devices
    };
    virtual ~KeyDevices() = default;

    /// Whether there is a device with keys that this user may read. Looks at the devices, and leaves none
    /// open.
    [[nodiscard]] virtual Access access() const = 0;
    /// The devices that are there now, by a name that lasts as long as the device does.
    [[nodiscard]] virtual std::vector<QString> names() const = 0;
    /// Nothing when it has gone, may not be read, or has none of a keyboard's keys.
    [[nodiscard]] virtual std::unique_ptr<KeyDevice> open(const QString& name) const = 0;
    /// Told when a device came, went or changed its permissions.
    [[nodiscard]] virtual Handle onChange(std::function<void()> changed) = 0;
};

} // namespace lorvane
