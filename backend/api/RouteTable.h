// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/Http.h"

#include <string>
#include <vector>

namespace lorvane::backend {

// Which route a request means. Whatever can be got can be asked for its head alone (RFC 9110 9.3.2).
class RouteTable {
 public:
    struct Found {
        const Route* route = nullptr; // as long as the table
        int status = 0;               // without a route: why there is none
        std::string what;             // how the request is called in the log: never by the client's own words
        std::string_view allow;       // the methods that the path has
    };

    explicit RouteTable(std::vector<Route> routes) : routes_(std::move(routes)) {}

    Found find(std::string_view method, std::string_view target) const {
        const auto path = pathOf(target);
        Found found{nullptr, 404, "unknown path", {}};
        for (const auto& route : routes_) {
            if (route.path != path)
                continue;
            const auto allow = route.method == "GET" ? std::string_view("GET, HEAD") : route.method;
            if (route.method == method || (method == "HEAD" && route.method == "GET"))
                return {&route, 0, std::string(method) + ' ' + std::string(route.path), allow};
            found = {nullptr, 405, "another method on " + std::string(route.path), allow};
        }
        return found;
    }

 private:
    // A target may hold the whole address (RFC 9112 3.2.2).
    static std::string_view pathOf(std::string_view target) {
        const auto path = target.substr(0, target.find('?'));
        if (!path.starts_with("http://") && !path.starts_with("https://"))
            return path;
        const auto slash = path.find('/', path.find("//") + 2);
        return slash == std::string_view::npos ? std::string_view("/") : path.substr(slash);
    }

    const std::vector<Route> routes_;
};

} // namespace lorvane::backend
