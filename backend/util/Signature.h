// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>

namespace lorvane::backend {

constexpr std::size_t ed25519KeySize = 32;
constexpr std::size_t ed25519SignatureSize = 64;

// RFC 8032, plain Ed25519. False for sizes that are none, too.
bool ed25519Verifies(std::string_view key, std::string_view message, std::string_view signature);

} // namespace lorvane::backend
