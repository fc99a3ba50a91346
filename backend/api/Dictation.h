// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/Dictated.h"
#include "api/TakeBody.h"
#include "api/TakeMemory.h"
#include "engines/Engine.h"
#include "storage/Storage.h"
#include "util/ByteBudget.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <variant>
#include <vector>

namespace lorvane::backend {

class Linguist;

enum class DictationError {
    badAudio,
    tooLong,
    languageUnavailable,
    noSpeech,
    stopped,
    engineFailed,
    busy, // no memory for its sound beside that of the others
};

// A take made ready: decoded, and found in the memory if it came before.
struct ReadyTake {
    explicit ReadyTake(std::shared_ptr<ByteBudget> budget) : memory(std::move(budget)) {}

    DeviceId device = 0;
    std::string language;
    std::string translate; // into this language; empty: not at all
    std::string style;
    std::string prefix;
    std::string before;                // what stands before the take
    std::string context;               // the words before its audio
    std::vector<std::int16_t> samples; // none any more once they have been recognised
    ByteBudget::Share memory;          // that they take
    std::shared_ptr<TakeProgress> progress;
    void dropSound() {
        samples = {};
        memory.release();
    }
    double seconds() const { return static_cast<double>(samples.size()) / sampleRate; }
};

// From a take's bytes to clean text. Any thread, several calls at once.
class Dictation {
 public:
    // Fragments of the text in order; concatenated they are the text, unless a language server failed after
    // it had begun to write: then the text is another one. False: nobody takes any more of them.
    using OnDelta = std::function<bool(std::string fragment)>;

    // The recogniser is done with the take, and a language server is asked to write it.
    using OnHeard = std::function<void()>;

    // `budget`: of the sound of all takes together.
    Dictation(Storage& storage, Engine& engine, TakeMemory& memory, const Linguist& linguist,
              double maxSeconds, std::shared_ptr<ByteBudget> budget);

    // Memory for a take beside its sound, to be taken by whoever reads it.
    ByteBudget::Share memory() const { return ByteBudget::Share(budget_); }
    std::variant<ReadyTake, DictationError> prepare(DeviceId device, const TakeId& id, const Take& take,
                                                    const std::stop_token& stop) const;
    std::variant<Dictated, DictationError> run(ReadyTake& take, const OnDelta& onDelta,
                                               const OnHeard& onHeard, const std::stop_token& stop) const;
    // The words alone, without clean-up; silence gives no words.
    std::variant<std::string, DictationError> transcribe(ReadyTake& take, const std::stop_token& stop) const;

 private:
    using OnSegment = std::function<void(const HeardSegment&)>;
    std::optional<DictationError> recognise(ReadyTake& take, TakeProgress::Turn& turn,
                                            const OnSegment& onSegment, const std::stop_token& stop) const;
    std::optional<DictationError> rewrite(const ReadyTake& take, const OnDelta& onDelta, Dictated& dictated,
                                          const std::stop_token& stop) const;
    bool translates(const ReadyTake& take) const;

    Storage& storage_;
    Engine& engine_;
    TakeMemory& memory_;
    const Linguist& linguist_;
    const double maxSeconds_;
    const std::shared_ptr<ByteBudget> budget_;
};

} // namespace lorvane::backend
