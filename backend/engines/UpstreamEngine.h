// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engines/Engine.h"
#include "engines/Upstreams.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <set>
#include <vector>

namespace lorvane::backend {

struct UpstreamTimes {
    std::chrono::milliseconds connect = std::chrono::seconds(5);
    std::chrono::milliseconds answer = std::chrono::seconds(30); // or twice the sound, if that is more
    std::chrono::milliseconds whole = std::chrono::seconds(200);
    std::chrono::milliseconds queue = std::chrono::seconds(30);             // for a free place at a server
    std::chrono::milliseconds secondRound = std::chrono::milliseconds(200); // before all are tried once more
};

// Recognition by servers with OpenAI's transcription endpoint, in order of preference: whoever cannot be
// reached, is too busy or fails leaves the take to the next. A take goes out as 16 kHz mono WAV, one of more
// than ten minutes in several parts cut at pauses. Their text comes with capitals and punctuation.
class UpstreamEngine : public Engine {
 public:
    UpstreamEngine(std::vector<SpeechUpstream> upstreams, UpstreamTimes times = {});
    ~UpstreamEngine() override;

    std::string_view name() const override { return "upstream"; }
    bool speaks(std::string_view) const override { return true; }
    bool writesSentences() const override { return true; }
    void warmUp() override {}
    Recognition recognise(const RecognitionJob& job, const OnSegment& onSegment,
                          std::stop_token stop) override;

 private:
    struct Place;
    struct Heard {
        enum class End { text, next, refused, stopped };
        End end = End::next;
        std::string text;
        std::string reason; // unless text
    };
    Heard hear(Samples part, const RecognitionJob& job, std::string_view before, const std::stop_token& stop);
    Heard tryAll(Samples part, const RecognitionJob& job, std::string_view before,
                 const std::stop_token& stop);
    Heard ask(Place& place, Samples part, const RecognitionJob& job, std::string_view before,
              const std::stop_token& stop);
    Place* enter(std::set<const Place*>& tried, const std::stop_token& stop);
    void leave(Place& place, const Heard& heard);

    const UpstreamTimes times_;
    std::mutex mutex_;
    std::condition_variable_any changed_;
    std::vector<std::unique_ptr<Place>> places_;
};

// A file of the sound, for servers and for tests.
std::string wavOf(Samples samples);

} // namespace lorvane::backend
