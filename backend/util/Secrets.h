// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace lorvane::backend {

using Digest = std::array<std::uint8_t, 32>;

Digest sha256(std::string_view bytes);

inline std::string_view asBytes(const Digest& digest) {
    return {reinterpret_cast<const char*>(digest.data()), digest.size()};
}

// A number of it where 64 bits are enough to tell things apart.
inline std::int64_t numberOf(const Digest& digest) {
    std::int64_t number = 0;
    std::memcpy(&number, digest.data(), sizeof number);
    return number;
}

// 256 bits from the kernel as 64 hexadecimal digits. Throws std::system_error when the kernel has none to
// give.
std::string newToken();

// Eight signs for people to read out and type in: none that looks like another, no vowel that would make
// words. About 110,000 million of them. Throws as newToken().
std::string newReadableCode();

// Of a file with a password or a key: its first line without blanks at the end. Nothing when it cannot be
// read.
std::optional<std::string> firstLineOf(const std::filesystem::path& file);

} // namespace lorvane::backend
