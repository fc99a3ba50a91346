// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace lorvane::backend {

// The identifiers of the labels that every client has: work, personal, inspiration, family, ideas, tasks.
std::span<const std::string_view> labels();

// The label whose keywords speak loudest in a text; empty when none does, or two do alike. English and
// Russian; it knows words and not what they mean.
std::string_view labelByKeywords(std::string_view text);

} // namespace lorvane::backend
