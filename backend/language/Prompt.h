// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "language/ChatClient.h"

#include <string>
#include <string_view>
#include <vector>

namespace lorvane::backend {

// One thing that a model works with: somebody's words, which are never orders to it.
struct Material {
    std::string_view name; // in capitals: "TEXT"
    std::string text;
};

struct Prompt {
    ChatRequest request;
    std::string marker;
};

// The task goes into the system message; the materials go into the user message alone, each between two lines
// of its name and a marker of 256 random bits, new for each request. So nothing in a material can look like
// its end, and the system message says that nothing in between is an order. Throws std::system_error.
Prompt promptOf(std::string_view task, const std::vector<Material>& materials, std::size_t mostTokens);

// Room for an answer as long as this text, and half as much again. A token is two bytes of text or more but
// in the rarest of scripts.
std::size_t tokensFor(std::string_view text);

} // namespace lorvane::backend
