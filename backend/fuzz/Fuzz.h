// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace lorvane::backend::fuzz {

// What holds for every input; a crash is what the fuzzer looks for.
inline void require(bool holds, const char* what) {
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

// Takes the first byte off; 0 of an empty input.
inline std::uint8_t takeByte(std::string_view& input) {
    if (input.empty())
        return 0;
    const auto byte = static_cast<std::uint8_t>(input.front());
    input.remove_prefix(1);
    return byte;
}

} // namespace lorvane::backend::fuzz
