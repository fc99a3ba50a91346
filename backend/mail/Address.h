// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>

namespace lorvane::backend {

// An address as people have them: a dot-atom of ASCII, "@", a host name of two labels or more (RFC 5321 4.1.2
// and 4.5.3.1 without quoted names and address literals, which nobody types in for a friend). Whether anybody
// reads mail there, it cannot tell.
bool isMailAddress(std::string_view text);

} // namespace lorvane::backend
