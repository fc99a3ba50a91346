// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace lorvane::backend {

using Digest = std::array<std::uint8_t, 32>;

Digest sha256(std::string_view bytes);

// 256 bits from the kernel as 64 hexadecimal digits. Throws std::system_error when the kernel has none to
// give.
std::string newToken();

} // namespace lorvane::backend
