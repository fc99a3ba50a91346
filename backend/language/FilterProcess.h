// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace lorvane::backend {

struct FilterBounds {
    std::chrono::milliseconds time = std::chrono::seconds(20);
    std::size_t bytes = std::size_t(1) << 20; // of its output
};

// Runs a program on a text and gives what it writes; nothing when it cannot be run, does not end well, or
// goes over a bound. It and all that it started are gone when this returns. Its error stream goes nowhere,
// its environment holds nothing of ours. Blocks, and ends at once when asked to stop. Any thread.
std::optional<std::string> filter(const std::vector<std::string>& command, std::string_view input,
                                  const FilterBounds& bounds, const std::stop_token& stop);

} // namespace lorvane::backend
