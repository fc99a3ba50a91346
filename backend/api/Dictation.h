// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/TakeBody.h"
#include "engines/Engine.h"
#include "storage/Storage.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <variant>
#include <vector>

namespace lorvane::backend {

class TakeMemory;
class TakeProgress;

struct Dictated {
    std::string text;
    std::string raw;
};

enum class DictationError { badAudio, tooLong, languageUnavailable, noSpeech, stopped, engineFailed };

// A take made ready: decoded, and found in the memory if it came before.
struct ReadyTake {
    DeviceId device = 0;
    std::string language;
    std::string prefix;
    std::string context;
    std::vector<std::int16_t> samples;
    std::shared_ptr<TakeProgress> progress;
    double seconds() const { return static_cast<double>(samples.size()) / sampleRate; }
};

// From a take's bytes to clean text. Any thread, several calls at once.
class Dictation {
 public:
    // Fragments of the text in order; concatenated they are the text. False: nobody takes any more of them.
    using OnDelta = std::function<bool(std::string fragment)>;

    Dictation(Storage& storage, Engine& engine, TakeMemory& memory, double maxSeconds);

    std::variant<ReadyTake, DictationError> prepare(DeviceId device, const std::string& takeId,
                                                    const Take& take, const std::stop_token& stop) const;
    std::variant<Dictated, DictationError> run(ReadyTake& take, const OnDelta& onDelta,
                                               const std::stop_token& stop) const;
    // The words alone, without clean-up; silence gives no words.
    std::variant<std::string, DictationError> transcribe(ReadyTake& take, const std::stop_token& stop) const;

 private:
    using OnSegment = std::function<void(const std::string&)>;
    std::optional<DictationError> recognise(ReadyTake& take, const OnSegment& onSegment,
                                            const std::stop_token& stop) const;

    Storage& storage_;
    Engine& engine_;
    TakeMemory& memory_;
    const double maxSeconds_;
};

} // namespace lorvane::backend
