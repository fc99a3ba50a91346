// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Dictation.h"
#include "api/Goal.h"
#include "api/Handlers.h"
#include "api/Metrics.h"
#include "api/Wire.h"
#include "language/Sentences.h"
#include "storage/StorageError.h"
#include "util/Log.h"

#include <cstdio>

namespace lorvane::backend {

namespace {

constexpr int partsOfTake = 20; // a long take is sent ahead in so many parts at most, on the average

void refuse(Exchange& exchange, DictationError error) {
    const auto meaning = meaningOf(error);
    refuse(exchange, meaning.status, meaning.code);
}

void noteLength(const Services& services, Exchange& exchange, const ReadyTake& take) {
    char text[32];
    std::snprintf(text, sizeof text, "audio=%.2fs", take.seconds());
    exchange.note(text);
    services.metrics.countAudio(take.seconds());
}

// The take of the request made ready, or nothing after the request has been answered.
std::optional<ReadyTake> readyTake(const Services& services, const Request& request, Exchange& exchange) {
    const auto read = readTake(request.contentType, request.body);
    if (const auto* malformed = std::get_if<MalformedTake>(&read)) {
        exchange.note(malformed->reason);
        exchange.respond({400, errorBody("bad_request")});
        return std::nullopt;
    }
    const auto& take = std::get<Take>(read);
    auto ready = services.dictation.prepare(request.device, request.takeId, take, exchange.stopToken());
    if (const auto* error = std::get_if<DictationError>(&ready)) {
        refuse(exchange, *error);
        return std::nullopt;
    }
    noteLength(services, exchange, std::get<ReadyTake>(ready));
    return std::move(std::get<ReadyTake>(ready));
}

// A take that was let in once may come again: the upload after a broken stream is no second one.
bool takeAdmitted(const Services& services, const Request& request, std::string_view bucket,
                  const Rate& rate) {
    if (rate.burst <= 0)
        return true;
    auto& storage = services.storage;
    try {
        const auto take = sha256(request.takeId);
        const bool named = !request.takeId.empty();
        if (named && !storage.firstOfTake(request.device, take, bucket))
            return true;
        if (storage.admit(bucket, storage.personOf(request.device), rate).count() == 0)
            return true;
        if (named)
            storage.forgetTake(request.device, take, bucket);
        return false;
    } catch (const StorageError& error) {
        logLine(std::string("no limits, the store failed: ") + error.what());
        return true;
    }
}

// Each take once; a take of which the words could not be added is not counted yet.
void countWords(Storage& storage, const Request& request, const std::string& text) {
    const auto take = sha256(request.takeId);
    if (!request.takeId.empty() && !storage.firstOfTake(request.device, take, "words"))
        return;
    try {
        storage.addPhoneWords(request.device, static_cast<std::int64_t>(wordCount(text)));
    } catch (const StorageError&) {
        if (!request.takeId.empty())
            storage.forgetTake(request.device, take, "words");
        throw;
    }
}

// Counts the words of a take that came from a telephone, and tells how the day stands. What
// the store cannot do is no reason to lose a take.
std::optional<DailyGoal> goalAfter(const Services& services, const Request& request,
                                   const std::string& text) {
    auto& storage = services.storage;
    try {
        const bool phone = !request.platform.empty() && request.platform != "mac";
        if (phone)
            countWords(storage, request, text);
        return goalOf(storage.phoneWords(request.device), storage.today(), services.options.phoneGoal);
    } catch (const StorageError& error) {
        logLine(std::string("no goal, the store failed: ") + error.what());
        return std::nullopt;
    }
}

void noteTranslation(Exchange& exchange, const ReadyTake& take, const Dictated& dictated) {
    if (!take.translate.empty() && dictated.original.empty())
        exchange.note("not translated");
}

} // namespace

void handleDictate(const Services& services, const Request& request, Exchange& exchange) {
    if (!takeAdmitted(services, request, "take", services.options.limits.takes))
        return refuse(exchange, 429, "dictate_limit");
    auto take = readyTake(services, request, exchange);
    if (!take)
        return;
    const auto result = services.dictation.run(
        *take, [](const std::string&) { return true; }, exchange.stopToken());
    if (const auto* error = std::get_if<DictationError>(&result))
        return refuse(exchange, *error);
    const auto& dictated = std::get<Dictated>(result);
    noteTranslation(exchange, *take, dictated);
    exchange.respond({200, dictatedBody(dictated, goalAfter(services, request, dictated.text))});
}

// Whatever can be said by a status is said before the stream begins; what comes later is said in its last
// line, and so is the limit, for which a stream has no status that its client would tell from a failure.
void handleDictateStream(const Services& services, const Request& request, Exchange& exchange) {
    if (!takeAdmitted(services, request, "take", services.options.limits.takes)) {
        exchange.note("dictate_limit");
        exchange.startLines();
        exchange.writeLine(errorLine("dictate_limit"));
        return;
    }
    auto take = readyTake(services, request, exchange);
    if (!take)
        return;
    exchange.startLines();
    const auto onDelta = [&](const std::string& fragment) { return exchange.writeLine(deltaLine(fragment)); };
    const auto result = services.dictation.run(*take, onDelta, exchange.stopToken());
    if (const auto* error = std::get_if<DictationError>(&result)) {
        exchange.note(meaningOf(*error).code);
        exchange.writeLine(errorLine(meaningOf(*error).code));
        return;
    }
    const auto& dictated = std::get<Dictated>(result);
    noteTranslation(exchange, *take, dictated);
    exchange.writeLine(doneLine(dictated, goalAfter(services, request, dictated.text)));
}

void handleTranscribePart(const Services& services, const Request& request, Exchange& exchange) {
    const auto& takes = services.options.limits.takes;
    if (!takeAdmitted(services, request, "part", {takes.burst * partsOfTake, takes.interval / partsOfTake}))
        return refuse(exchange, 429, "dictate_limit");
    auto take = readyTake(services, request, exchange);
    if (!take)
        return;
    const auto result = services.dictation.transcribe(*take, exchange.stopToken());
    if (const auto* error = std::get_if<DictationError>(&result))
        return refuse(exchange, *error);
    exchange.respond({200, textBody(std::get<std::string>(result))});
}

} // namespace lorvane::backend
