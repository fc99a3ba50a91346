// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

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

// Stops calls to a server that fails again and again, for longer and longer, and lets a single one through
// then. Not for several threads at once.
class CircuitBreaker {
 public:
    using TimePoint = std::chrono::steady_clock::time_point;
    bool allows(TimePoint now);
    void succeeded();
    void failed(TimePoint now);

    static constexpr int failuresToOpen = 3;
    static constexpr std::chrono::seconds firstPause{10};
    static constexpr std::chrono::seconds longestPause{120};

 private:
    int failures_ = 0;
    std::chrono::seconds pause_ = firstPause;
    std::optional<TimePoint> closedUntil_;
};

} // namespace lorvane::backend
