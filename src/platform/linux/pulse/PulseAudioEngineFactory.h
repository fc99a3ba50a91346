// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/AudioEngine.h"
#include "platform/linux/pulse/PulseConnection.h"

namespace lorvane {

/// Engines on the sound server; the converters come from elsewhere.
class PulseAudioEngineFactory final : public AudioEngineFactory {
 public:
    using ConverterMaker = std::function<std::unique_ptr<PCMConverter>(const InputFormat& format)>;

    PulseAudioEngineFactory(PulseConnection& connection, ConverterMaker converters)
        : connection_(connection), converters_(std::move(converters)) {}

    /// Denied when the server refused us.
    [[nodiscard]] AudioAuthorisation authorisation() const override;
    [[nodiscard]] std::unique_ptr<AudioEngine> makeEngine() override;
    [[nodiscard]] std::unique_ptr<PCMConverter> makeConverter(const InputFormat& format) override {
        return converters_(format);
    }

 private:
    PulseConnection& connection_;
    ConverterMaker converters_;
};

} // namespace lorvane
