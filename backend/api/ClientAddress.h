// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lorvane::backend {

// 16 bytes; an IPv4 address is the IPv6 address that stands for it (RFC 4291 2.5.5.2).
using NetworkAddress = std::array<std::uint8_t, 16>;

// Whose word on where a request comes from is taken.
class TrustedProxies {
 public:
    // Addresses and networks between commas: "127.0.0.1, 10.0.0.0/8, fd00::/8". Nothing when one of them is
    // neither.
    static std::optional<TrustedProxies> parse(std::string_view list);

    bool contains(const NetworkAddress& address) const;

    // Who asks, as far as limits tell one from another: "192.0.2.1", or of IPv6 the network that one customer
    // has, "2001:db8:0:1::/64". That is the peer, or whom proxies have named in X-Forwarded-For (all its
    // lines, joined by commas): the last one that was named by a trusted one. Empty without an address.
    std::string clientOf(std::string_view peer, std::string_view forwarded) const;

 private:
    struct Network {
        NetworkAddress address;
        unsigned bits;
    };
    std::vector<Network> networks_;
};

} // namespace lorvane::backend
