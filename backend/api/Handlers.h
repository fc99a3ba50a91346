// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/Http.h"

#include <vector>

namespace lorvane::backend {

class Dictation;

// Every route of the service. The references must outlive the routes.
std::vector<Route> makeRoutes(Storage& storage, const Dictation& dictation, std::size_t takeLimit);

} // namespace lorvane::backend
