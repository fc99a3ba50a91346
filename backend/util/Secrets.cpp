// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/Secrets.h"

#include <cerrno>
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

std::string newToken() {
    std::array<std::uint8_t, 32> random{};
    if (getrandom(random.data(), random.size(), 0) != static_cast<ssize_t>(random.size()))
        throw std::system_error(errno, std::generic_category(), "getrandom");
    static constexpr char digits[] = "0123456789abcdef";
    std::string token;
    token.reserve(random.size() * 2);
    for (const auto byte : random) {
        token += digits[byte >> 4];
        token += digits[byte & 15];
    }
    return token;
}

} // namespace lorvane::backend
