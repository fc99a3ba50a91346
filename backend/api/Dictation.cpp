// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Dictation.h"

#include "api/TakeMemory.h"
#include "engines/AudioDecoder.h"
#include "engines/CleanUp.h"
#include "util/Log.h"

#include <cstdint>

namespace lorvane::backend {

namespace {

// The fields come in any order on the wire, so the digest is over their values, each with its length before
// it.
Digest contentOf(const Take& take) {
    std::string all;
    for (const auto* field :
         {&take.fields.lang, &take.fields.translate, &take.fields.style, &take.fields.prefix})
        all += std::to_string(field->size()) + ':' + *field;
    const auto audio = sha256(take.audioBytes());
    all.append(reinterpret_cast<const char*>(audio.data()), audio.size());
    return sha256(all);
}

DictationError errorOf(AudioError error) {
    switch (error) {
    case AudioError::tooLong:
        return DictationError::tooLong;
    case AudioError::stopped:
        return DictationError::stopped;
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

} // namespace

Dictation::Dictation(Storage& storage, Engine& engine, TakeMemory& memory, double maxSeconds)
    : storage_(storage), engine_(engine), memory_(memory), maxSeconds_(maxSeconds) {}

std::variant<ReadyTake, DictationError> Dictation::prepare(DeviceId device, const std::string& takeId,
                                                           const Take& take,
                                                           const std::stop_token& stop) const {
    if (!engine_.speaks(take.fields.lang))
        return DictationError::languageUnavailable;
    auto decoded = decodeAudio(take.audioBytes(), maxSeconds_, stop);
    if (const auto* error = std::get_if<AudioError>(&decoded))
        return errorOf(*error);
    ReadyTake ready;
    ready.device = device;
    ready.language = take.fields.lang;
    ready.prefix = take.fields.prefix;
    ready.context = take.fields.context.empty() ? take.fields.prefix : take.fields.context;
    ready.samples = std::move(std::get<std::vector<std::int16_t>>(decoded));
    ready.progress = memory_.find(device, takeId, contentOf(take));
    return ready;
}

std::optional<DictationError> Dictation::recognise(ReadyTake& take, const OnSegment& onSegment,
                                                   const std::stop_token& stop) const {
    TakeProgress::Turn turn(*take.progress, stop);
    if (!turn)
        return DictationError::stopped;
    auto& known = turn.segments();
    for (const auto& segment : known)
        onSegment(segment);
    if (turn.complete() || take.samples.empty())
        return std::nullopt;
    const RecognitionJob job{take.samples, take.language, take.context,
                             storage_.adaptation(take.device, engine_.name()).value_or(""), known.size()};
    const auto result = engine_.recognise(
        job,
        [&](std::string text, auto) {
            known.push_back(std::move(text));
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
        storage_.keepAdaptation(take.device, engine_.name(), result.adaptation);
    return std::nullopt;
}

std::variant<Dictated, DictationError> Dictation::run(ReadyTake& take, const OnDelta& onDelta,
                                                      const std::stop_token& stop) const {
    CleanUp cleanUp;
    const bool written = engine_.writesSentences();
    Dictated dictated;
    bool wanted = true;
    const auto deliver = [&](std::string fragment) {
        dictated.text += fragment;
        if (wanted && !fragment.empty())
            wanted = onDelta(std::move(fragment));
    };
    const auto hear = [&](const std::string& raw) {
        dictated.raw = joined(std::move(dictated.raw), raw);
        if (!written)
            deliver(cleanUp.add(raw));
        else if (!raw.empty())
            deliver(dictated.text.empty() ? raw : ' ' + raw);
    };
    if (!take.prefix.empty())
        hear(take.prefix);
    if (const auto error = recognise(take, hear, stop))
        return *error;
    if (!written)
        deliver(cleanUp.finish());
    if (dictated.text.empty())
        return DictationError::noSpeech;
    return dictated;
}

std::variant<std::string, DictationError> Dictation::transcribe(ReadyTake& take,
                                                                const std::stop_token& stop) const {
    std::string raw;
    const auto error = recognise(
        take, [&](const std::string& segment) { raw = joined(std::move(raw), segment); }, stop);
    if (error)
        return *error;
    return raw;
}

} // namespace lorvane::backend
