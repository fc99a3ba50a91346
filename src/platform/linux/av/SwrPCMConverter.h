// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/PCMConverter.h"

#include <memory>

struct SwrContext;

namespace lorvane {

/// By libswresample: mixes all channels with equal weight and resamples with a filter that lasts from buffer
/// to buffer.
class SwrPCMConverter final : public PCMConverter {
 public:
    /// Null when there can be no converter for this format.
    [[nodiscard]] static std::unique_ptr<PCMConverter> make(const InputFormat& format);

    [[nodiscard]] std::optional<QByteArray> convert(const InputBuffer& buffer, std::size_t capacity) override;

 private:
    struct Free {
        void operator()(SwrContext* context) const;
    };
    explicit SwrPCMConverter(std::unique_ptr<SwrContext, Free> context, unsigned channels);

    std::unique_ptr<SwrContext, Free> context_;
    unsigned channels_;
};

} // namespace lorvane
