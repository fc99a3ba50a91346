// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "storage/Storage.h"
#include "util/ShortMemory.h"

#include <chrono>
#include <cstring>
#include <functional>
#include <optional>

namespace lorvane::backend {

// Whose a token is, asked of the store and remembered for a short while: for a moment to spare the store, and
// for longer when the store is away. Any thread.
class TokenCache {
 public:
    using Now = std::function<std::chrono::steady_clock::time_point()>;
    // A token that has been taken back may still pass for so long.
    static constexpr std::chrono::seconds fresh{5};

    // `lasting`: how old an answer of the store may be when there is no newer one to be had.
    TokenCache(Storage& storage, std::chrono::milliseconds lasting,
               Now now = &std::chrono::steady_clock::now);

    // From memory alone, at once; nothing when the store has to be asked.
    std::optional<DeviceId> recall(std::string_view token);
    // Throws StorageError when the store does not know and memory does not either.
    std::optional<DeviceId> deviceOf(std::string_view token);

 private:
    // A digest is as good as random already.
    struct FirstBytes {
        std::size_t operator()(const Digest& digest) const {
            std::size_t value = 0;
            std::memcpy(&value, digest.data(), sizeof value);
            return value;
        }
    };
    static constexpr std::size_t mostTokens = 100'000;

    Storage& storage_;
    const std::chrono::milliseconds lasting_;
    ShortMemory<Digest, DeviceId, FirstBytes> known_;
};

} // namespace lorvane::backend
