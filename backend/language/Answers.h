// SPDX-License-Identifier: GPL-3.0-or-later
// What models were asked to answer in JSON, checked and bounded. Nothing for anything that is not as asked
// for; a fence or a remark around the object is forgiven.
#pragma once

#include "language/Insights.h"

#include <optional>
#include <string>
#include <string_view>

namespace lorvane::backend {

std::optional<Insights> readInsights(std::string_view answer);
// {"summary": …}
std::optional<std::string> readSummary(std::string_view answer);
// {"label": one of labels()}; an empty text for "none".
std::optional<std::string> readLabel(std::string_view answer);

} // namespace lorvane::backend
