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

bool CircuitBreaker::allows(TimePoint now) {
    if (!closedUntil_)
        return true;
    if (now < *closedUntil_)
        return false;
    closedUntil_ = now + pause_; // one goes through; the others wait for how it ends
    return true;
}

void CircuitBreaker::succeeded() {
    failures_ = 0;
    pause_ = firstPause;
    closedUntil_.reset();
}

void CircuitBreaker::failed(TimePoint now) {
    if (++failures_ < failuresToOpen)
        return;
    if (failures_ > failuresToOpen)
        pause_ = std::min(pause_ * 2, longestPause);
    closedUntil_ = now + pause_;
}

} // namespace lorvane::backend
