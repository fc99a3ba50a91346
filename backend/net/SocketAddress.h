// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lorvane::backend {

struct SocketAddress {
    std::string host; // without the brackets of IPv6
    std::string port;
    std::string path = "/";
};

// "scheme://host[:port][/path]", IPv6 in brackets; nothing when the text is no such address.
std::optional<SocketAddress> readSocketAddress(std::string_view url, std::string_view scheme,
                                               std::string_view usualPort);

} // namespace lorvane::backend
