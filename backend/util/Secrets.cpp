// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/Secrets.h"

#include <cerrno>
#include <fstream>
#include <openssl/evp.h>
#include <stdexcept>
#include <sys/random.h>
#include <system_error>

namespace lorvane::backend {

Digest sha256(std::string_view bytes) {
    Digest digest{};
    if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), nullptr, EVP_sha256(), nullptr) != 1)
        throw std::runtime_error("SHA-256 is not available");
    return digest;
}

namespace {

template <std::size_t size>
std::array<std::uint8_t, size> randomBytes() {
    std::array<std::uint8_t, size> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
        throw std::system_error(errno, std::generic_category(), "getrandom");
    return bytes;
}

} // namespace

std::string newToken() {
    static constexpr char digits[] = "0123456789abcdef";
    std::string token;
    for (const auto byte : randomBytes<32>()) {
        token += digits[byte >> 4];
        token += digits[byte & 15];
    }
    return token;
}

std::string newReadableCode() {
    static constexpr std::string_view signs = "23456789CDFGHJKMNPQRTVWX";
    constexpr std::size_t length = 8;
    constexpr std::size_t fair =
        256 / signs.size() * signs.size(); // above it some signs would come more often
    std::string code;
    while (code.size() < length)
        for (const auto byte : randomBytes<16>())
            if (byte < fair && code.size() < length)
                code += signs[byte % signs.size()];
    return code;
}

std::optional<std::string> firstLineOf(const std::filesystem::path& file) {
    std::ifstream in(file);
    std::string line;
    if (!in || !std::getline(in, line))
        return std::nullopt;
    while (line.ends_with('\r') || line.ends_with(' '))
        line.pop_back();
    return line;
}

} // namespace lorvane::backend
