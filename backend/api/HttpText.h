// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace lorvane::backend {

std::string lowerCase(std::string_view text);

// "Application/JSON; charset=utf-8" is "application/json".
std::string mediaType(std::string_view contentType);

// What follows "Bearer " (in any case); empty for any other scheme.
std::string bearerToken(std::string_view authorization);

// A header of one word as it came; empty when it is longer than 64 characters or has any that is not
// printable ASCII.
std::string usableHeaderWord(std::string_view header);

} // namespace lorvane::backend
