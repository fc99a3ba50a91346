// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/AudioEngine.h"
#include "base/Handle.h"

#include <QString>

#include <functional>
#include <vector>

namespace lorvane {

/// A device as the system tells of it.
struct AudioDevice {
    AudioDeviceID id = 0;
    /// 0: it has outputs only. A monitor that hears what an output plays is no input.
    unsigned inputChannels = 0;
    /// Stays the same when the device is plugged in again. Empty when it cannot be read.
    QString uid = {};
    QString name = {};
    bool isBuiltIn = false;
};

/// The system's devices. Main thread.
class InputDevices {
 public:
    virtual ~InputDevices() = default;
    /// Those of this moment, in the system's order; none when they cannot be read. Does not block.
    [[nodiscard]] virtual std::vector<AudioDevice> devices() const = 0;
    /// Told when one came, went or changed.
    [[nodiscard]] virtual Handle subscribe(std::function<void()> changed) = 0;
};

} // namespace lorvane
