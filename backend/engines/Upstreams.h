// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "net/SocketAddress.h"

#include <string>
#include <string_view>

namespace lorvane::backend {

enum class SpeechProtocol { openai, wyoming, vosk };

// How speech servers really differ.
struct SpeechProfile {
    SpeechProtocol protocol;
    std::string_view kind;
    std::string_view path;            // with OpenAI's protocol
    std::string_view unknownLanguage; // sent when the client tells none; empty: the field is left out
    bool prompt;                      // takes what came before as a hint; others write it into the text
    bool model;                       // refuses a request without one
    std::size_t atOnce;               // requests; more would only wait there
    bool sentences = true;            // writes capitals and punctuation
};

// openai, whispercpp, speaches, vllm, llamacpp, ollama, generic, wyoming, vosk; nothing for any other word.
const SpeechProfile* findSpeechProfile(std::string_view kind);

// Where a server of that protocol can be: http(s)://, tcp:// for Wyoming, ws:// for Vosk.
bool isSpeechAddress(SpeechProtocol protocol, std::string_view url);
// Of the last two, with the port that is usual there when the address has none.
std::optional<SocketAddress> speechSocket(SpeechProtocol protocol, std::string_view url);

struct SpeechUpstream {
    const SpeechProfile* profile = nullptr;
    std::string url; // without a slash at its end
    std::string model;
    std::string key; // bearer token; empty: none
};

} // namespace lorvane::backend
