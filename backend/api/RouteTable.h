// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/Http.h"

#include <string>
#include <vector>

namespace lorvane::backend {

// Which route a request means.
class RouteTable {
 public:
    struct Found {
        const Route* route = nullptr; // as long as the table
        int status = 0;               // without a route: why there is none
        std::string what;             // how the request is called in the log: never by the client's own words
        std::string_view allow;       // a method that the path has
    };

    explicit RouteTable(std::vector<Route> routes) : routes_(std::move(routes)) {}

    Found find(std::string_view method, std::string_view target) const {
        const auto path = target.substr(0, target.find('?'));
        Found found{nullptr, 404, "unknown path", {}};
        for (const auto& route : routes_) {
            if (route.path != path)
                continue;
            if (route.method == method)
                return {&route, 0, std::string(route.method) + ' ' + std::string(route.path), route.method};
            found = {nullptr, 405, "another method on " + std::string(route.path), route.method};
        }
        return found;
    }

 private:
    const std::vector<Route> routes_;
};

} // namespace lorvane::backend
