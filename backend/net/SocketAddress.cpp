// SPDX-License-Identifier: GPL-3.0-or-later
#include "net/SocketAddress.h"

#include <algorithm>

namespace lorvane::backend {

namespace {

bool isPort(std::string_view text) {
    return !text.empty() && text.size() <= 5 &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

} // namespace

std::optional<SocketAddress> readSocketAddress(std::string_view url, std::string_view scheme,
                                               std::string_view usualPort) {
    if (!url.starts_with(scheme) || !url.substr(scheme.size()).starts_with("://"))
        return std::nullopt;
    url.remove_prefix(scheme.size() + 3);
    SocketAddress address;
    if (const auto slash = url.find('/'); slash != std::string_view::npos) {
        address.path = url.substr(slash);
        url = url.substr(0, slash);
    }
    std::string_view port = usualPort;
    const auto colon = url.rfind(':');
    if (colon != std::string_view::npos && (!url.starts_with('[') || url[colon - 1] == ']')) {
        port = url.substr(colon + 1);
        url = url.substr(0, colon);
    }
    if (url.starts_with('[') && url.ends_with(']'))
        url = url.substr(1, url.size() - 2);
    if (url.empty() || !isPort(port))
        return std::nullopt;
    address.host = url;
    address.port = port;
    return address;
}

} // namespace lorvane::backend
