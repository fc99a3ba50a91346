// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace lorvane::backend {

// Text as it stands in HTML and XML, between tags or in quotes. Signs that XML cannot hold become blanks.
std::string escapedMarkup(std::string_view text);

// What `r` (the code of who recommends) and `c` (where the link stood) of a query come to on the page that
// leads to the download. Both go on to `downloadUrl`; whatever is not letters, digits, "-" and "_" is left
// out.
std::string landingPage(std::string_view query, std::string_view downloadUrl);

} // namespace lorvane::backend
