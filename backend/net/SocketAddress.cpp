// SPDX-License-Identifier: GPL-3.0-or-later
#include "net/SocketAddress.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace lorvane::backend {

namespace {

bool isPort(std::string_view text) {
    std::uint16_t port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    return error == std::errc() && end == text.data() + text.size() && port > 0;
}

// Takes the host off, without the brackets of an IPv6 address; empty when it is none.
std::string_view takeHost(std::string_view& rest) {
    const bool bracketed = rest.starts_with('[');
    const auto end = bracketed ? rest.find(']') : rest.find(':');
    if (bracketed && end == std::string_view::npos)
        return {};
    const auto host = bracketed ? rest.substr(1, end - 1) : rest.substr(0, end);
    rest.remove_prefix(std::min(rest.size(), bracketed ? end + 1 : end));
    return host.find_first_of("[]") == std::string_view::npos ? host : std::string_view();
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
    address.host = takeHost(url);
    if (!url.empty() && !url.starts_with(':'))
        return std::nullopt;
    address.port = url.empty() ? usualPort : url.substr(1);
    if (address.host.empty() || !isPort(address.port))
        return std::nullopt;
    return address;
}

} // namespace lorvane::backend
