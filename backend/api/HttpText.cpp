// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/HttpText.h"

#include <algorithm>

namespace lorvane::backend {

namespace {
constexpr std::size_t longestWord = 64;
}

std::string lowerCase(std::string_view text) {
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return out;
}

std::string mediaType(std::string_view contentType) {
    auto type = contentType.substr(0, contentType.find(';'));
    while (type.ends_with(' ') || type.ends_with('\t'))
        type.remove_suffix(1);
    return lowerCase(type);
}

std::string bearerToken(std::string_view authorization) {
    constexpr std::string_view scheme = "bearer ";
    if (lowerCase(authorization.substr(0, scheme.size())) != scheme)
        return {};
    return std::string(authorization.substr(scheme.size()));
}

std::string usableHeaderWord(std::string_view header) {
    const bool usable = header.size() <= longestWord &&
                        std::all_of(header.begin(), header.end(), [](char c) { return c > ' ' && c < 0x7f; });
    return usable ? std::string(header) : std::string();
}

} // namespace lorvane::backend
