// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engines/Engine.h"
#include "engines/Upstreams.h"
#include "net/ServerPool.h"

#include <chrono>
#include <vector>

namespace lorvane::backend {

struct UpstreamTimes {
    std::chrono::milliseconds connect = std::chrono::seconds(5);
    std::chrono::milliseconds answer = std::chrono::seconds(30); // or twice the sound, if that is more
    std::chrono::milliseconds whole = std::chrono::seconds(200);
    PoolTimes pool;
};

// Recognition by speech servers, in order of preference: whoever cannot be reached, is too busy or fails
// leaves the take to the next. A take goes out as 16 kHz mono, one of more than ten minutes in several parts
// cut at pauses. Their text comes with capitals and punctuation, but for those that write plain words: each
// segment says which it is, since nobody knows beforehand who will hear a take.
class UpstreamEngine : public Engine {
 public:
    UpstreamEngine(std::vector<SpeechUpstream> upstreams, UpstreamTimes times = {});

    std::string_view name() const override { return "upstream"; }
    bool speaks(std::string_view) const override { return true; }
    bool mayBePlain(std::string_view language) const override;
    ServerFigures figures() const override { return pool_.figures(); }
    void warmUp() override {}
    Recognition recognise(const RecognitionJob& job, const OnSegment& onSegment,
                          std::stop_token stop) override;

 private:
    Attempt ask(const SpeechUpstream& upstream, Samples part, const RecognitionJob& job,
                std::string_view before, HeardSegment& heard, const std::stop_token& stop) const;
    Attempt askSocket(const SpeechUpstream& upstream, Samples part, const RecognitionJob& job,
                      std::string& text, const std::stop_token& stop) const;
    Attempt askHttp(const SpeechUpstream& upstream, Samples part, const RecognitionJob& job,
                    std::string_view before, std::string& text, const std::stop_token& stop) const;

    const std::vector<SpeechUpstream> upstreams_;
    const UpstreamTimes times_;
    ServerPool pool_;
};

// A file of the sound, for servers and for tests.
std::string wavOf(Samples samples);

} // namespace lorvane::backend
