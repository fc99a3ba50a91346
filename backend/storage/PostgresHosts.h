// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

namespace lorvane::backend {

// One place where a server may be; what is empty is as libpq takes it to be.
struct PostgresHost {
    std::string host;
    std::string address; // numeric
    std::string port;
};

// All places of an address, in its order: every host of its list, and every address that a name has. Looks
// names up, as libpq would; at least one.
std::vector<PostgresHost> postgresHosts(const std::string& address);

} // namespace lorvane::backend
