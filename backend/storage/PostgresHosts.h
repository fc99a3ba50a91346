// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

namespace lorvane::backend {

// One place where a server may be; what is empty is as libpq takes it to be.
struct PostgresHost {
    std::string host;
    std::string address; // numeric; empty for a name that is to be looked up, and for a socket's path
    std::string port;
    bool named() const { return address.empty() && !host.empty() && host[0] != '/' && host[0] != '@'; }
};

// The hosts of an address in its order; without any those that the environment names to libpq (PGHOST,
// PGHOSTADDR, PGPORT). At least one.
std::vector<PostgresHost> postgresHosts(const std::string& address);

} // namespace lorvane::backend
