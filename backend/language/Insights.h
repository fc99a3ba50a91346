// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace lorvane::backend {

struct Suggestion {
    std::string title;
    std::string detail;
};

struct Resource {
    std::string title;
    std::string why;
};

struct Insights {
    std::string summary;
    std::vector<std::string> strengths;
    std::vector<Suggestion> suggestions;
    std::vector<Resource> resources;
};

constexpr std::size_t fewestSamples = 3;

// Says in plain English words what can be counted in messages: how long sentences are, how they begin, which
// words fill and which come again and again. Knows nothing of what they mean. Nothing for fewer than
// `fewestSamples` messages that have words.
std::optional<Insights> insightsOf(const std::vector<std::string>& samples);

} // namespace lorvane::backend
