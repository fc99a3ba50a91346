// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/pulse/PulseInputDevices.h"

namespace lorvane {

std::vector<AudioDevice> PulseInputDevices::devices() const {
    std::vector<AudioDevice> devices;
    for (const PulseSource& source : connection_.inputs().sources) {
        const unsigned channels = source.isMonitor ? 0 : source.format.channels;
        devices.push_back({source.index, channels, source.name, source.description, source.isBuiltIn});
    }
    return devices;
}

} // namespace lorvane
