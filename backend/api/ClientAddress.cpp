// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/ClientAddress.h"

#include <algorithm>
#include <arpa/inet.h>
#include <charconv>
#include <cstring>

namespace lorvane::backend {

namespace {

constexpr std::size_t mappedBytes = 12;
constexpr std::array<std::uint8_t, mappedBytes> mapped{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff};
constexpr std::size_t customerBytes = 8;
constexpr unsigned allBits = 128;

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t'))
        text.remove_suffix(1);
    return text;
}

std::optional<NetworkAddress> addressOf(std::string_view view) {
    const std::string text(view);
    NetworkAddress address{};
    if (::inet_pton(AF_INET6, text.c_str(), address.data()) == 1)
        return address;
    std::copy(mapped.begin(), mapped.end(), address.begin());
    if (::inet_pton(AF_INET, text.c_str(), address.data() + mappedBytes) == 1)
        return address;
    return std::nullopt;
}

bool isIpv4(const NetworkAddress& address) {
    return std::equal(mapped.begin(), mapped.end(), address.begin());
}

// Some proxies add the port.
std::optional<NetworkAddress> forwardedAddress(std::string_view text) {
    if (text.starts_with('['))
        return addressOf(text.substr(1, std::min(text.find(']'), text.size()) - 1));
    if (text.find(':') == text.rfind(':'))
        text = text.substr(0, text.find(':'));
    return addressOf(text);
}

std::string textOf(NetworkAddress address) {
    std::array<char, INET6_ADDRSTRLEN> text{};
    if (isIpv4(address)) {
        ::inet_ntop(AF_INET, address.data() + mappedBytes, text.data(), text.size());
        return text.data();
    }
    std::fill(address.begin() + customerBytes, address.end(), std::uint8_t(0));
    ::inet_ntop(AF_INET6, address.data(), text.data(), text.size());
    return text.data() + std::string("/64");
}

} // namespace

std::optional<TrustedProxies> TrustedProxies::parse(std::string_view list) {
    TrustedProxies proxies;
    if (trimmed(list).empty())
        return proxies;
    for (std::size_t begin = 0, end = 0; end < list.size(); begin = end + 1) {
        end = std::min(list.find(',', begin), list.size());
        const auto entry = trimmed(list.substr(begin, end - begin));
        const auto slash = std::min(entry.find('/'), entry.size());
        const auto address = addressOf(entry.substr(0, slash));
        if (!address)
            return std::nullopt;
        const unsigned before = entry.find(':') == std::string_view::npos ? mappedBytes * 8 : 0;
        unsigned bits = allBits - before;
        if (slash < entry.size()) {
            const auto* const last = entry.data() + entry.size();
            const auto [read, error] = std::from_chars(entry.data() + slash + 1, last, bits);
            if (error != std::errc() || read != last || bits > allBits - before)
                return std::nullopt;
        }
        proxies.networks_.push_back({*address, before + bits});
    }
    return proxies;
}

bool TrustedProxies::contains(const NetworkAddress& address) const {
    return std::any_of(networks_.begin(), networks_.end(), [&](const Network& network) {
        const auto whole = network.bits / 8;
        const auto rest = static_cast<std::uint8_t>(0xff00U >> network.bits % 8);
        return std::memcmp(address.data(), network.address.data(), whole) == 0 &&
               (rest == 0 || ((address.at(whole) ^ network.address.at(whole)) & rest) == 0);
    });
}

std::string TrustedProxies::clientOf(std::string_view peer, std::string_view forwarded) const {
    auto client = addressOf(peer);
    while (client && contains(*client) && !forwarded.empty()) {
        const auto comma = forwarded.rfind(',');
        const auto begin = comma == std::string_view::npos ? 0 : comma + 1;
        const auto named = forwardedAddress(trimmed(forwarded.substr(begin)));
        if (!named)
            break;
        client = named;
        forwarded = forwarded.substr(0, begin == 0 ? 0 : comma);
    }
    return client ? textOf(*client) : std::string();
}

} // namespace lorvane::backend
