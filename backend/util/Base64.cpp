// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/Base64.h"

#include <cstdint>

namespace lorvane::backend {

namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

int valueOf(char c) {
    if (c >= 'A' && c <= 'Z')
        return c - 'A';
    if (c >= 'a' && c <= 'z')
        return c - 'a' + 26;
    if (c >= '0' && c <= '9')
        return c - '0' + 52;
    if (c == '+')
        return 62;
    return c == '/' ? 63 : -1;
}

std::size_t paddingOf(std::string_view text) {
    if (text.ends_with("=="))
        return 2;
    return text.ends_with('=') ? 1 : 0;
}

} // namespace

std::optional<std::string> decodeBase64(std::string_view text) {
    if (text.size() % 4 != 0)
        return std::nullopt;
    const auto padding = paddingOf(text);
    text.remove_suffix(padding);
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3 + 2);
    std::uint32_t pending = 0;
    int bits = 0;
    for (const char c : text) {
        const int value = valueOf(c);
        if (value < 0)
            return std::nullopt;
        pending = (pending << 6 | static_cast<std::uint32_t>(value)) & 0xffffU;
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            bytes += static_cast<char>(pending >> bits & 0xffU);
        }
    }
    return bytes;
}

std::string encodeBase64(std::string_view bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k)
            group = group << 8 | (i + k < bytes.size() ? static_cast<std::uint8_t>(bytes[i + k]) : 0U);
        for (std::size_t k = 0; k < 4; ++k)
            text += i + k <= bytes.size() ? alphabet[group >> (18 - 6 * k) & 63U] : '=';
    }
    return text;
}

} // namespace lorvane::backend
