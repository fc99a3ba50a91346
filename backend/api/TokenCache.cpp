// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/TokenCache.h"

#include "storage/StorageError.h"

#include <algorithm>
#include <utility>

namespace lorvane::backend {

TokenCache::TokenCache(Storage& storage, std::chrono::milliseconds lasting, Now now)
    : storage_(storage), lasting_(lasting), known_(mostTokens, std::move(now)) {}

std::optional<DeviceId> TokenCache::recall(std::string_view token) {
    return known_.recall(sha256(token), std::min<std::chrono::milliseconds>(fresh, lasting_));
}

std::optional<DeviceId> TokenCache::deviceOf(std::string_view token) {
    const auto digest = sha256(token);
    try {
        const auto device = storage_.deviceOfToken(digest);
        if (device)
            known_.remember(digest, *device);
        else
            known_.forget(digest);
        return device;
    } catch (const StorageError&) {
        if (const auto device = known_.recall(digest, lasting_))
            return device;
        throw;
    }
}

} // namespace lorvane::backend
