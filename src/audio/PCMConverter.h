// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <cstddef>
#include <optional>

namespace lorvane {

/// What the whole system records in: 16,000 Hz, one channel, signed 16-bit in host order.
inline constexpr double captureRate = 16'000.0;
inline constexpr qsizetype captureBytesPerFrame = 2;

struct InputFormat {
    double sampleRate = 0;
    unsigned channels = 0;
    friend bool operator==(const InputFormat&, const InputFormat&) = default;
};

/// Interleaved float samples, nominally -1 to 1; valid during the call that hands them over.
struct InputBuffer {
    const float* samples = nullptr;
    std::size_t frames = 0;
    unsigned channels = 0;
};

/// Turns the buffers of one input into the capture format, in order, keeping its state from one to the next
/// and never told of an end. Used from one thread at a time.
class PCMConverter {
 public:
    virtual ~PCMConverter() = default;
    /// At most `capacity` frames of PCM, what is left over comes with the next buffer. Nothing when it
    /// fails.
    [[nodiscard]] virtual std::optional<QByteArray> convert(const InputBuffer& buffer,
                                                            std::size_t capacity) = 0;
};

} // namespace lorvane
