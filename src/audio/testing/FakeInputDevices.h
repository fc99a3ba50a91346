// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/InputDevices.h"
#include "base/Signal.h"

namespace lorvane {

/// Devices that a test plugs in and out.
class FakeInputDevices final : public InputDevices {
 public:
    [[nodiscard]] std::vector<AudioDevice> devices() const override { return devices_; }
    [[nodiscard]] Handle subscribe(std::function<void()> changed) override {
        return changed_.subscribe(std::move(changed));
    }

    void set(std::vector<AudioDevice> devices) {
        devices_ = std::move(devices);
        changed_.emit();
    }
    /// A change that nobody has been told of yet.
    void setSilently(std::vector<AudioDevice> devices) { devices_ = std::move(devices); }

 private:
    std::vector<AudioDevice> devices_;
    Signal<> changed_;
};

} // namespace lorvane
