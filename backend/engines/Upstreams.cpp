// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/Upstreams.h"

#include <algorithm>
#include <array>

namespace lorvane::backend {

namespace {

constexpr std::string_view usual = "/v1/audio/transcriptions";

// whispercpp: works on one request at a time, and takes English for a language that is not told.
constexpr auto profiles = std::to_array<SpeechProfile>({
    {"openai", usual, "", true, true, 16},
    {"whispercpp", "/inference", "auto", true, false, 1},
    {"speaches", usual, "", true, true, 4},
    {"vllm", usual, "", true, true, 16},
    {"llamacpp", usual, "", false, false, 4},
    {"ollama", usual, "", false, true, 2},
    {"generic", usual, "", false, false, 4},
});

} // namespace

const SpeechProfile* findSpeechProfile(std::string_view kind) {
    const auto* found = std::find_if(profiles.begin(), profiles.end(),
                                     [&](const auto& profile) { return profile.kind == kind; });
    return found == profiles.end() ? nullptr : found;
}

} // namespace lorvane::backend
