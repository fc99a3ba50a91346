// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace lorvane::backend {

// How the servers that offer OpenAI's transcription really differ.
struct SpeechProfile {
    std::string_view kind;
    std::string_view path;
    std::string_view unknownLanguage; // sent when the client tells none; empty: the field is left out
    bool prompt;                      // takes what came before as a hint; others write it into the text
    bool model;                       // refuses a request without one
    std::size_t atOnce;               // requests; more would only wait there
};

// openai, whispercpp, speaches, vllm, llamacpp, ollama, generic; nothing for any other word.
const SpeechProfile* findSpeechProfile(std::string_view kind);

struct SpeechUpstream {
    const SpeechProfile* profile = nullptr;
    std::string url; // without a slash at its end
    std::string model;
    std::string key; // bearer token; empty: none
};

} // namespace lorvane::backend
