// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/Upstreams.h"

#include <algorithm>
#include <array>

namespace lorvane::backend {

namespace {

constexpr std::string_view usual = "/v1/audio/transcriptions";

// whispercpp: works on one request at a time, and takes English for a language that is not told.
constexpr auto profiles = std::to_array<SpeechProfile>({
    {SpeechProtocol::openai, "openai", usual, "", true, true, 16},
    {SpeechProtocol::openai, "whispercpp", "/inference", "auto", true, false, 1},
    {SpeechProtocol::openai, "speaches", usual, "", true, true, 4},
    {SpeechProtocol::openai, "vllm", usual, "", true, true, 16},
    {SpeechProtocol::openai, "llamacpp", usual, "", false, false, 4},
    {SpeechProtocol::openai, "ollama", usual, "", false, true, 2},
    {SpeechProtocol::openai, "generic", usual, "", false, false, 4},
    {SpeechProtocol::wyoming, "wyoming", "", "", false, false, 2},
    {SpeechProtocol::vosk, "vosk", "", "", false, false, 4, false},
});

} // namespace

const SpeechProfile* findSpeechProfile(std::string_view kind) {
    const auto* found = std::find_if(profiles.begin(), profiles.end(),
                                     [&](const auto& profile) { return profile.kind == kind; });
    return found == profiles.end() ? nullptr : found;
}

std::optional<SocketAddress> speechSocket(SpeechProtocol protocol, std::string_view url) {
    return protocol == SpeechProtocol::wyoming ? readSocketAddress(url, "tcp", "10300")
                                               : readSocketAddress(url, "ws", "2700");
}

bool isSpeechAddress(SpeechProtocol protocol, std::string_view url) {
    if (protocol == SpeechProtocol::openai)
        return url.starts_with("http://") || url.starts_with("https://");
    return speechSocket(protocol, url).has_value();
}

} // namespace lorvane::backend
