// SPDX-License-Identifier: GPL-3.0-or-later
#include "storage/PostgresHosts.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <libpq-fe.h>
#include <memory>
#include <netdb.h>

namespace lorvane::backend {

namespace {

std::vector<std::string> listOf(const PQconninfoOption* options, const char* keyword) {
    std::vector<std::string> list;
    for (const auto* option = options; option && option->keyword; ++option) {
        if (std::strcmp(option->keyword, keyword) != 0 || !option->val)
            continue;
        std::string_view rest = option->val;
        for (auto comma = rest.find(','); comma != std::string_view::npos; comma = rest.find(',')) {
            list.emplace_back(rest.substr(0, comma));
            rest.remove_prefix(comma + 1);
        }
        list.emplace_back(rest);
    }
    return list;
}

std::string entry(const std::vector<std::string>& list, std::size_t index) {
    return index < list.size() ? list[index] : std::string();
}

// Nothing for a name that nobody knows, and for a socket's path.
std::vector<std::string> addressesOf(const std::string& host) {
    std::vector<std::string> addresses;
    if (host.empty() || host.starts_with('/') || host.starts_with('@'))
        return addresses;
    addrinfo wish{};
    wish.ai_socktype = SOCK_STREAM;
    addrinfo* raw = nullptr;
    if (::getaddrinfo(host.c_str(), nullptr, &wish, &raw) != 0)
        return addresses;
    const std::unique_ptr<addrinfo, void (*)(addrinfo*)> found(raw, &::freeaddrinfo);
    for (const auto* each = found.get(); each; each = each->ai_next) {
        std::array<char, NI_MAXHOST> text{};
        if (::getnameinfo(each->ai_addr, each->ai_addrlen, text.data(), text.size(), nullptr, 0,
                          NI_NUMERICHOST) == 0)
            addresses.emplace_back(text.data());
    }
    return addresses;
}

} // namespace

std::vector<PostgresHost> postgresHosts(const std::string& address) {
    const std::unique_ptr<PQconninfoOption, void (*)(PQconninfoOption*)> options(
        PQconninfoParse(address.c_str(), nullptr), &PQconninfoFree);
    const auto names = listOf(options.get(), "host");
    const auto numbers = listOf(options.get(), "hostaddr");
    const auto ports = listOf(options.get(), "port");
    std::vector<PostgresHost> hosts;
    for (std::size_t i = 0; i < std::max(names.size(), numbers.size()); ++i) {
        const auto port = ports.size() == 1 ? ports.front() : entry(ports, i);
        auto addresses = entry(numbers, i).empty() ? addressesOf(entry(names, i))
                                                   : std::vector<std::string>{entry(numbers, i)};
        if (addresses.empty())
            addresses.emplace_back();
        for (auto& each : addresses)
            hosts.push_back({entry(names, i), std::move(each), port});
    }
    if (hosts.empty())
        hosts.emplace_back();
    return hosts;
}

} // namespace lorvane::backend
