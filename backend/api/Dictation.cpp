// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Dictation.h"

#include "engines/AudioDecoder.h"
#include "engines/CleanUp.h"
#include "language/Labels.h"
#include "language/Linguist.h"
#include "storage/StorageError.h"
#include "util/Log.h"

#include <algorithm>
#include <system_error>
#include <thread>

namespace lorvane::backend {

namespace {

DictationError errorOf(AudioError error) {
    switch (error) {
    case AudioError::tooLong:
        return DictationError::tooLong;
    case AudioError::stopped:
        return DictationError::stopped;
    case AudioError::noMemory:
        return DictationError::busy;
    case AudioError::unreadable:
        break;
    }
    return DictationError::badAudio;
}

std::string joined(std::string text, const std::string& more) {
    if (!text.empty() && !more.empty())
        text += ' ';
    return text + more;
}

// What an engine has learnt makes a take better. That it cannot be had, or kept, is no reason to lose the
// take.
std::string adaptationOf(Storage& storage, DeviceId device, std::string_view engine) {
    try {
        return storage.adaptation(device, engine).value_or("");
    } catch (const StorageError& error) {
        logLine(std::string("nothing learnt is known, the store failed: ") + error.what());
        return {};
    }
}

void keepAdaptation(Storage& storage, DeviceId device, std::string_view engine, std::string_view bytes) {
    try {
        storage.keepAdaptation(device, engine, bytes);
    } catch (const StorageError& error) {
        logLine(std::string("what was learnt is not kept, the store failed: ") + error.what());
    }
}

// A prefix comes back from the client without its origin. Recognisers that write plain words write nothing of
// these.
bool looksWritten(std::string_view text) {
    return std::any_of(text.begin(), text.end(), [](char c) {
        return (c >= 'A' && c <= 'Z') || std::string_view(".,?!;:").find(c) != std::string_view::npos;
    });
}

// The text of a take without any help from elsewhere, as its segments come.
class SegmentText {
 public:
    // Without `onDelta` it is shown to nobody.
    SegmentText(const ReadyTake& take, Dictation::OnDelta onDelta)
        : before_(take.before), style_(take.style), onDelta_(std::move(onDelta)) {}

    void add(const HeardSegment& segment) {
        dictated_.raw = joined(std::move(dictated_.raw), segment.text);
        if (segment.plain)
            return deliver(rules().add(segment.text, segment.pause));
        endRules();
        blankDue_ = blankWanted();
        deliver(segment.text);
    }
    Dictated finish() {
        endRules();
        return std::move(dictated_);
    }

 private:
    // They go on as long as plain words come.
    CleanUp& rules() {
        if (!rules_) {
            rules_.emplace(dictated_.text.empty() ? before_ : dictated_.text, style_);
            blankDue_ = blankWanted();
        }
        return *rules_;
    }
    void endRules() {
        if (rules_)
            deliver(rules_->finish());
        rules_.reset();
    }
    bool blankWanted() const { return !dictated_.text.empty() && !dictated_.text.ends_with('\n'); }
    void deliver(std::string fragment) {
        if (fragment.empty())
            return;
        if (std::exchange(blankDue_, false))
            fragment.insert(0, 1, ' ');
        dictated_.text += fragment;
        if (onDelta_ && wanted_)
            wanted_ = onDelta_(std::move(fragment));
    }

    const std::string before_;
    const std::string style_;
    const Dictation::OnDelta onDelta_;
    std::optional<CleanUp> rules_;
    Dictated dictated_;
    bool blankDue_ = false;
    bool wanted_ = true;
};

// The label is looked for beside the writing; its place is not to be looked at before this ends.
class Labelling {
 public:
    Labelling(const Linguist& linguist, const std::string& text, std::string& label,
              const std::stop_token& stop) {
        try {
            thread_ = std::jthread([&linguist, text, &label, stop] {
                try {
                    label = linguist.label(text, stop);
                } catch (const std::exception& error) {
                    logLine(std::string("no label: ") + error.what());
                }
            });
        } catch (const std::system_error& error) { // no more threads: no reason to lose the take
            logLine(std::string("a label by keywords alone: ") + error.what());
            label = labelByKeywords(text);
        }
    }

 private:
    std::jthread thread_;
};

} // namespace

Dictation::Dictation(Storage& storage, Engine& engine, TakeMemory& memory, const Linguist& linguist,
                     double maxSeconds, std::shared_ptr<ByteBudget> budget)
    : storage_(storage), engine_(engine), memory_(memory), linguist_(linguist), maxSeconds_(maxSeconds),
      budget_(std::move(budget)) {}

std::variant<ReadyTake, DictationError>
Dictation::prepare(DeviceId device, const TakeId& id, const Take& take, const std::stop_token& stop) const {
    if (!engine_.speaks(take.fields.lang))
        return DictationError::languageUnavailable;
    ReadyTake ready(budget_);
    auto decoded = decodeAudio(take.audioBytes(), maxSeconds_, stop, &ready.memory);
    if (const auto* error = std::get_if<AudioError>(&decoded))
        return errorOf(*error);
    ready.device = device;
    ready.language = take.fields.lang;
    if (take.fields.translate.size() >= 2)
        ready.translate = take.fields.translate;
    ready.style = take.fields.style;
    ready.prefix = take.fields.prefix;
    ready.before = take.fields.context;
    ready.context = take.fields.context.empty() ? take.fields.prefix : take.fields.context;
    ready.samples = std::move(std::get<std::vector<std::int16_t>>(decoded));
    ready.progress = memory_.find(device, id);
    return ready;
}

std::optional<DictationError> Dictation::recognise(ReadyTake& take, TakeProgress::Turn& turn,
                                                   const OnSegment& onSegment,
                                                   const std::stop_token& stop) const {
    auto& known = turn.segments();
    std::string before = take.context;
    for (const auto& segment : known) {
        onSegment(segment);
        before = joined(std::move(before), segment.text);
    }
    if (turn.complete() || take.samples.empty())
        return std::nullopt;
    const RecognitionJob job{take.samples, take.language, before,
                             adaptationOf(storage_, take.device, engine_.name()), known.size()};
    const auto result = engine_.recognise(
        job,
        [&](HeardSegment segment) {
            known.push_back(std::move(segment));
            onSegment(known.back());
        },
        stop);
    if (result.end == Recognition::End::stopped)
        return DictationError::stopped;
    if (result.end == Recognition::End::failed) {
        logLine("recognition failed: " + result.reason);
        return DictationError::engineFailed;
    }
    turn.complete() = true;
    if (!result.adaptation.empty())
        keepAdaptation(storage_, take.device, engine_.name(), result.adaptation);
    return std::nullopt;
}

bool Dictation::translates(const ReadyTake& take) const {
    return !take.translate.empty() && take.translate != take.language &&
           linguist_.translates(take.language, take.translate);
}

std::variant<Dictated, DictationError> Dictation::run(ReadyTake& take, const OnDelta& onDelta,
                                                      const OnHeard& onHeard,
                                                      const std::stop_token& stop) const {
    TakeProgress::Turn turn(*take.progress, stop);
    if (!turn)
        return DictationError::stopped;
    if (const auto& known = turn.dictated()) {
        onDelta(known->text);
        return *known;
    }
    // What will be written anew is not shown before.
    const bool rewritten = linguist_.writer() || translates(take);
    SegmentText text(take, rewritten ? OnDelta() : onDelta);
    if (!take.prefix.empty())
        text.add({take.prefix, {}, engine_.mayBePlain(take.language) && !looksWritten(take.prefix)});
    if (const auto error = recognise(
            take, turn, [&](const HeardSegment& segment) { text.add(segment); }, stop))
        return *error;
    take.dropSound();
    auto dictated = text.finish();
    if (dictated.text.empty())
        return DictationError::noSpeech;
    if (linguist_.writer())
        onHeard();
    if (const auto error = rewritten ? rewrite(take, onDelta, dictated, stop) : std::nullopt)
        return *error;
    if (!rewritten)
        dictated.category = linguist_.label(dictated.text, stop);
    turn.dictated() = dictated;
    return dictated;
}

// From the text without any help to the one with: cleaned by a language server, translated, labelled.
// Whatever of it fails, the words are delivered.
std::optional<DictationError> Dictation::rewrite(const ReadyTake& take, const OnDelta& onDelta,
                                                 Dictated& dictated, const std::stop_token& stop) const {
    const Labelling labelling(linguist_, dictated.raw, dictated.category, stop);
    bool shown = false;
    const auto show = [&](std::string fragment) {
        shown = true;
        return onDelta(std::move(fragment));
    };
    const bool translated = translates(take);
    if (const auto* writer = linguist_.writer()) {
        const auto hide = [](const std::string&) { return true; };
        auto written = writer->cleanUp({dictated.raw, take.language, take.style, take.before},
                                       translated ? Writer::OnFragment(hide) : show, stop);
        if (written.end == Written::End::stopped)
            return DictationError::stopped;
        if (written.end == Written::End::done)
            dictated.text = std::move(written.text);
    }
    if (translated) {
        auto translation = linguist_.translate(dictated.text, take.language, take.translate, show, stop);
        if (!translation.text.empty())
            dictated.original = std::exchange(dictated.text, std::move(translation.text));
    }
    if (stop.stop_requested())
        return DictationError::stopped;
    if (!shown)
        onDelta(dictated.text);
    return std::nullopt;
}

std::variant<std::string, DictationError> Dictation::transcribe(ReadyTake& take,
                                                                const std::stop_token& stop) const {
    TakeProgress::Turn turn(*take.progress, stop);
    if (!turn)
        return DictationError::stopped;
    std::string raw;
    const auto error = recognise(
        take, turn, [&](const HeardSegment& segment) { raw = joined(std::move(raw), segment.text); }, stop);
    if (error)
        return *error;
    return raw;
}

} // namespace lorvane::backend
