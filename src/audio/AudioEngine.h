// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/PCMConverter.h"
#include "base/Handle.h"
#include "base/Result.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>

namespace lorvane {

/// A live device's number; it means that device only as long as it stays plugged in.
using AudioDeviceID = std::uint32_t;

struct EngineFailure {
    /// The system refuses us this input, though it may serve others.
    bool forbidden = false;
    /// The system's own words.
    QString description = {};
    friend bool operator==(const EngineFailure&, const EngineFailure&) = default;
};

/// One input stream of the system. Main thread; only the tap runs elsewhere. Ends its capture with itself.
class AudioEngine {
 public:
    /// Called on a thread of the engine, one buffer after the other, as soon as each was captured.
    using Tap = std::function<void(const InputBuffer& buffer)>;

    virtual ~AudioEngine() = default;

    /// Captures from this device from the next `start` on. A selected device that went away counts as none
    /// selected, which means the system's default input. The failure is the system's description.
    [[nodiscard]] virtual Result<void, QString> selectInput(AudioDeviceID device) = 0;
    /// The format in which the input stands now; zeros when there is no usable input.
    [[nodiscard]] virtual InputFormat inputFormat() = 0;
    /// Captures in the format that `inputFormat` gave last, in buffers of at most `frames`; the engine gives
    /// shorter ones to be quick. After a failure it captures nothing and holds no tap.
    [[nodiscard]] virtual Result<void, EngineFailure> start(unsigned frames, Tap tap) = 0;
    /// When it returns the tap is not running and is never called again. Does nothing when not started.
    virtual void stop() = 0;
    /// Told on the main thread when what is captured from has changed and may be opened anew: the device went
    /// away, another became the default one, the sound server came back.
    [[nodiscard]] virtual Handle subscribeConfigurationChange(std::function<void()> changed) = 0;
};

enum class AudioAuthorisation { authorised, denied, restricted, notDetermined };

/// Where a recorder gets its engines. Main thread; outlives what it made.
class AudioEngineFactory {
 public:
    virtual ~AudioEngineFactory() = default;
    /// At once, from what is known. A system that is not there forbids nothing.
    [[nodiscard]] virtual AudioAuthorisation authorisation() const = 0;
    [[nodiscard]] virtual std::unique_ptr<AudioEngine> makeEngine() = 0;
    /// To 16 kHz mono; null when that cannot be made of this format.
    [[nodiscard]] virtual std::unique_ptr<PCMConverter> makeConverter(const InputFormat& format) = 0;
};

} // namespace lorvane
