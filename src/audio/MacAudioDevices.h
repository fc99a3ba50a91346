// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/InputDevices.h"
#include "base/Signal.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace lorvane {

struct MacInputDevice {
    /// What the preference "tirra.mac.inputUID" stores.
    QString uid;
    QString name;
    bool isBuiltIn = false;
    friend bool operator==(const MacInputDevice&, const MacInputDevice&) = default;
};
[[nodiscard]] std::size_t qHash(const MacInputDevice& device, std::size_t seed = 0);

/// The inputs that a user can choose from, kept up to date. Main thread. The choice itself is a preference,
/// which nobody clears when its device goes away.
class MacAudioDevices {
 public:
    explicit MacAudioDevices(InputDevices& devices);

    /// Built-in ones first, then by name.
    [[nodiscard]] const std::vector<MacInputDevice>& inputs() const { return inputs_; }
    void refresh();
    /// Told after every refresh.
    [[nodiscard]] Handle subscribeInputs(std::function<void(const std::vector<MacInputDevice>&)> observer);

    /// The device that has this identifier now. Reads the system's devices anew, so it finds one that was
    /// plugged in a moment ago.
    [[nodiscard]] static std::optional<AudioDeviceID> deviceID(const InputDevices& devices,
                                                               const QString& forUID);

 private:
    InputDevices& devices_;
    std::vector<MacInputDevice> inputs_;
    Signal<std::vector<MacInputDevice>> inputsChanged_;
    Handle listener_;
};

} // namespace lorvane
