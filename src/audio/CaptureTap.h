// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/PCMConverter.h"
#include "audio/PCMSink.h"

#include <memory>

namespace lorvane {

/// What happens to each captured buffer, on the engine's thread: converted, measured and put into the sink. A
/// buffer that cannot be converted is dropped.
class CaptureTap {
 public:
    /// `sink` outlives the tap.
    CaptureTap(const InputFormat& format, std::unique_ptr<PCMConverter> converter, PCMSink& sink)
        : format_(format), converter_(std::move(converter)), sink_(sink) {}

    void operator()(const InputBuffer& buffer);

 private:
    InputFormat format_;
    std::unique_ptr<PCMConverter> converter_;
    PCMSink& sink_;
};

/// Loudness of the first channel, 0.0 to 1.0, on the scale of the pill.
[[nodiscard]] double levelOf(const InputBuffer& buffer);

} // namespace lorvane
