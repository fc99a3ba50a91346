// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/Http.h"

#include <vector>

namespace lorvane::backend {

struct Services;

// Every route of the service. The services must outlive the routes.
std::vector<Route> makeRoutes(const Services& services);

} // namespace lorvane::backend
