// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace lorvane::backend {

// How the servers that offer OpenAI's chat completions differ.
struct ChatProfile {
    std::string_view kind;
    bool model;         // refuses a request without one
    std::size_t atOnce; // requests; more would only wait there
};

// openai, vllm, llamacpp, ollama, generic; nothing for any other word.
const ChatProfile* findChatProfile(std::string_view kind);

struct ChatServer {
    const ChatProfile* profile = nullptr;
    std::string url; // without a slash at its end
    std::string model;
    std::string key; // bearer token; empty: none
};

} // namespace lorvane::backend
