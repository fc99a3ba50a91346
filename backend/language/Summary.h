// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

namespace lorvane::backend {

// The sentences that say most about what all the texts are about, in their own words and order: each in turn
// is the one whose words come most often, and words that are in it already count less for the next. At most
// `mostSentences`. Empty when there are no words.
std::string summaryOf(const std::vector<std::string>& texts, std::size_t mostSentences = 5);

} // namespace lorvane::backend
