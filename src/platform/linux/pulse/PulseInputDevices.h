// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/InputDevices.h"
#include "platform/linux/pulse/PulseConnection.h"

namespace lorvane {

/// The sound server's sources. A source's name is the identifier: it stays the same when the device is
/// plugged in again.
class PulseInputDevices final : public InputDevices {
 public:
    explicit PulseInputDevices(PulseConnection& connection) : connection_(connection) {}
    [[nodiscard]] std::vector<AudioDevice> devices() const override;
    [[nodiscard]] Handle subscribe(std::function<void()> changed) override {
        return connection_.subscribe(std::move(changed));
    }

 private:
    PulseConnection& connection_;
};

} // namespace lorvane
