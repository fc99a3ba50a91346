// SPDX-License-Identifier: GPL-3.0-or-later
#include "language/ChatServers.h"

#include <algorithm>
#include <array>

namespace lorvane::backend {

namespace {

constexpr auto profiles = std::to_array<ChatProfile>({
    {"openai", true, 32},
    {"vllm", true, 32},
    {"llamacpp", false, 4},
    {"ollama", true, 4},
    {"generic", false, 8},
});

} // namespace

const ChatProfile* findChatProfile(std::string_view kind) {
    const auto* found = std::find_if(profiles.begin(), profiles.end(),
                                     [&](const auto& profile) { return profile.kind == kind; });
    return found == profiles.end() ? nullptr : found;
}

} // namespace lorvane::backend
