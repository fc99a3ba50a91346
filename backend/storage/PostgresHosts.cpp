// SPDX-License-Identifier: GPL-3.0-or-later
#include "storage/PostgresHosts.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <libpq-fe.h>
#include <memory>
#include <string_view>

namespace lorvane::backend {

namespace {

std::vector<std::string> listOf(std::string_view rest) {
    std::vector<std::string> list;
    for (auto comma = rest.find(','); comma != std::string_view::npos; comma = rest.find(',')) {
        list.emplace_back(rest.substr(0, comma));
        rest.remove_prefix(comma + 1);
    }
    list.emplace_back(rest);
    return list;
}

std::vector<std::string> listOf(const PQconninfoOption* options, const char* keyword, const char* variable) {
    for (const auto* option = options; option && option->keyword; ++option)
        if (std::strcmp(option->keyword, keyword) == 0 && option->val)
            return listOf(option->val);
    const char* value = std::getenv(variable);
    return value ? listOf(value) : std::vector<std::string>();
}

std::string entry(const std::vector<std::string>& list, std::size_t index) {
    return index < list.size() ? list[index] : std::string();
}

} // namespace

std::vector<PostgresHost> postgresHosts(const std::string& address) {
    const std::unique_ptr<PQconninfoOption, void (*)(PQconninfoOption*)> options(
        PQconninfoParse(address.c_str(), nullptr), &PQconninfoFree);
    const auto names = listOf(options.get(), "host", "PGHOST");
    const auto numbers = listOf(options.get(), "hostaddr", "PGHOSTADDR");
    const auto ports = listOf(options.get(), "port", "PGPORT");
    std::vector<PostgresHost> hosts;
    for (std::size_t i = 0; i < std::max<std::size_t>({1, names.size(), numbers.size()}); ++i)
        hosts.push_back({entry(names, i), entry(numbers, i), ports.size() == 1 ? ports[0] : entry(ports, i)});
    return hosts;
}

} // namespace lorvane::backend
