// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "net/ServerPool.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>

namespace lorvane::backend {

// 16 kHz, one channel.
using Samples = std::span<const std::int16_t>;
inline constexpr int sampleRate = 16'000;

struct RecognitionJob {
    Samples samples;
    std::string_view language;     // a language code, or empty when the client leaves it to us
    std::string_view context;      // the text before this audio; may be empty
    std::string adaptation;        // what keepAdaptation was given last for this device; may be empty
    std::size_t segmentsKnown = 0; // that many segments of this very audio were recognised before: skip them
};

struct Recognition {
    enum class End { complete, noSpeech, stopped, failed };
    End end = End::failed;
    std::string adaptation; // to be kept for the device; empty means leave what is there
    std::string reason;     // for the log, when failed
};

// The final text of a stretch of sound.
struct HeardSegment {
    std::string text;                   // may be empty
    std::chrono::milliseconds pause{0}; // the silence before it, as far as the engine knows it
    bool plain = true; // no capitals, no punctuation: the rules of English are to make sentences of it
};

// Turns speech into raw text. Any thread, several calls at once; a call blocks until its end.
class Engine {
 public:
    // One segment, in order; a text given is never taken back. The calling thread is recognise's own.
    using OnSegment = std::function<void(HeardSegment segment)>;

    virtual ~Engine() = default;
    virtual std::string_view name() const = 0;
    virtual bool speaks(std::string_view language) const = 0;
    // Whether it gives plain segments. An empty language: nobody knows.
    virtual bool mayBePlain(std::string_view) const { return true; }
    // Of the servers that hear for it; none of an engine that hears itself.
    virtual ServerFigures figures() const { return {}; }
    // Loads what the first recognition would load. Blocks.
    virtual void warmUp() = 0;
    virtual Recognition recognise(const RecognitionJob& job, const OnSegment& onSegment,
                                  std::stop_token stop) = 0;
};

} // namespace lorvane::backend
