// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/Secrets.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace lorvane::backend {

using DeviceId = std::int64_t;

// What outlives the process. Every operation may be called from any thread and throws StorageError when the
// store cannot do it.
class Storage {
 public:
    virtual ~Storage() = default;

    // Adds the token to the device, which is made on first use. Tokens of earlier registrations stay good,
    // the newest `tokensPerDevice` of them.
    virtual DeviceId registerDevice(std::string_view device, const Digest& token) = 0;
    virtual std::optional<DeviceId> deviceOfToken(const Digest& token) = 0;

    // What an engine has learnt about the voice and microphone of a device; the bytes are the engine's own.
    virtual std::optional<std::string> adaptation(DeviceId device, std::string_view engine) = 0;
    virtual void keepAdaptation(DeviceId device, std::string_view engine, std::string_view bytes) = 0;

    static constexpr int tokensPerDevice = 8;
};

} // namespace lorvane::backend
