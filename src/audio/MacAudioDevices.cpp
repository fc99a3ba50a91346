// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/MacAudioDevices.h"

#include <QCollator>

#include <algorithm>

namespace lorvane {

namespace {

bool hasInput(const AudioDevice& device) { return device.inputChannels > 0; }

} // namespace

std::size_t qHash(const MacInputDevice& device, std::size_t seed) {
    return qHashMulti(seed, device.uid, device.name, device.isBuiltIn);
}

MacAudioDevices::MacAudioDevices(InputDevices& devices) : devices_(devices) {
    refresh();
    listener_ = devices_.subscribe([this] { refresh(); });
}

void MacAudioDevices::refresh() {
    std::vector<MacInputDevice> inputs;
    for (const AudioDevice& device : devices_.devices()) {
        if (hasInput(device) && !device.uid.isEmpty() && !device.name.isEmpty()) {
            inputs.push_back({device.uid, device.name, device.isBuiltIn});
        }
    }
    QCollator byName;
    byName.setCaseSensitivity(Qt::CaseInsensitive);
    std::stable_sort(inputs.begin(), inputs.end(), [&](const MacInputDevice& a, const MacInputDevice& b) {
        return a.isBuiltIn != b.isBuiltIn ? a.isBuiltIn : byName.compare(a.name, b.name) < 0;
    });
    inputs_ = std::move(inputs);
    inputsChanged_.emit(inputs_);
}

Handle MacAudioDevices::subscribeInputs(std::function<void(const std::vector<MacInputDevice>&)> observer) {
    return inputsChanged_.subscribe(std::move(observer));
}

std::optional<AudioDeviceID> MacAudioDevices::deviceID(const InputDevices& devices, const QString& forUID) {
    if (forUID.isEmpty()) {
        return std::nullopt;
    }
    for (const AudioDevice& device : devices.devices()) {
        if (hasInput(device) && device.uid == forUID) {
            return device.id;
        }
    }
    return std::nullopt;
}

} // namespace lorvane
