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

// A take as it came, which refers to the request's body.
struct ReceivedTake {
    ByteBudget::Share memory; // that its reading takes
    Take take;
    TakeId id;
};

// Nothing after the request has been answered.
std::optional<ReceivedTake> receivedTake(const Services& services, const Request& request,
                                         Exchange& exchange) {
    auto memory = services.dictation.memory();
    if (!memory.grow(memoryToReadTake(request.contentType, request.body.size()))) {
        refuse(exchange, DictationError::busy);
        return std::nullopt;
    }
    auto read = readTake(request.contentType, request.body);
    if (const auto* malformed = std::get_if<MalformedTake>(&read)) {
        exchange.note(malformed->reason);
        exchange.respond({400, errorBody("bad_request")});
        return std::nullopt;
    }
    auto& take = std::get<Take>(read);
    const auto id = identityOfTake(request.takeId, take);
    return ReceivedTake{std::move(memory), std::move(take), id};
}

// Likewise, made ready.
std::optional<ReadyTake> readyTake(const Services& services, const Request& request,
                                   const ReceivedTake& received, Exchange& exchange) {
    auto ready = services.dictation.prepare(request.device, received.id, received.take, exchange.stopToken());
    if (const auto* error = std::get_if<DictationError>(&ready)) {
        refuse(exchange, *error);
        return std::nullopt;
    }
    noteLength(services, exchange, std::get<ReadyTake>(ready));
    return std::move(std::get<ReadyTake>(ready));
}

bool takeAdmitted(const Services& services, const Request& request, const TakeId& id, std::string_view bucket,
                  const Rate& rate) {
    if (rate.burst <= 0)
        return true;
    try {
        return services.storage.admitTake(bucket, request.device, id, rate);
    } catch (const StorageError& error) {
        logLine(std::string("no limits, the store failed: ") + error.what());
        return true;
    }
}

// Counts the words of a take that came from a telephone, and tells how the day stands. What
// the store cannot do is no reason to lose a take.
std::optional<DailyGoal> goalAfter(const Services& services, const Request& request, const TakeId& id,
                                   const std::string& text) {
    auto& storage = services.storage;
    try {
        const bool phone = !request.platform.empty() && request.platform != "mac";
        if (phone)
            storage.addPhoneWords(request.device, id, static_cast<std::int64_t>(wordCount(text)));
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
    auto received = receivedTake(services, request, exchange);
    if (!received)
        return;
    const auto id = received->id;
    if (!takeAdmitted(services, request, id, "take", services.options.limits.takes))
        return refuse(exchange, 429, "dictate_limit");
    auto take = readyTake(services, request, *received, exchange);
    received.reset();
    if (!take)
        return;
    const auto result = services.dictation.run(
        *take, [](const std::string&) { return true; }, [&] { exchange.stepAside(); }, exchange.stopToken());
    if (const auto* error = std::get_if<DictationError>(&result))
        return refuse(exchange, *error);
    const auto& dictated = std::get<Dictated>(result);
    noteTranslation(exchange, *take, dictated);
    exchange.respond({200, dictatedBody(dictated, goalAfter(services, request, id, dictated.text))});
}

// Whatever can be said by a status is said before the stream begins; what comes later is said in its last
// line, and so is the limit, for which a stream has no status that its client would tell from a failure.
void handleDictateStream(const Services& services, const Request& request, Exchange& exchange) {
    auto received = receivedTake(services, request, exchange);
    if (!received)
        return;
    const auto id = received->id;
    if (!takeAdmitted(services, request, id, "take", services.options.limits.takes)) {
        exchange.note("dictate_limit");
        exchange.startLines();
        exchange.writeLine(errorLine("dictate_limit"));
        return;
    }
    auto take = readyTake(services, request, *received, exchange);
    received.reset();
    if (!take)
        return;
    exchange.startLines();
    const auto onDelta = [&](const std::string& fragment) { return exchange.writeLine(deltaLine(fragment)); };
    const auto result = services.dictation.run(
        *take, onDelta, [&] { exchange.stepAside(); }, exchange.stopToken());
    if (const auto* error = std::get_if<DictationError>(&result)) {
        exchange.note(meaningOf(*error).code);
        exchange.writeLine(errorLine(meaningOf(*error).code));
        return;
    }
    const auto& dictated = std::get<Dictated>(result);
    noteTranslation(exchange, *take, dictated);
    exchange.writeLine(doneLine(dictated, goalAfter(services, request, id, dictated.text)));
}

void handleTranscribePart(const Services& services, const Request& request, Exchange& exchange) {
    auto received = receivedTake(services, request, exchange);
    if (!received)
        return;
    const auto& takes = services.options.limits.takes;
    if (!takeAdmitted(services, request, received->id, "part",
                      {takes.burst * partsOfTake, takes.interval / partsOfTake}))
        return refuse(exchange, 429, "dictate_limit");
    auto take = readyTake(services, request, *received, exchange);
    received.reset();
    if (!take)
        return;
    const auto result = services.dictation.transcribe(*take, exchange.stopToken());
    if (const auto* error = std::get_if<DictationError>(&result))
        return refuse(exchange, *error);
    exchange.respond({200, textBody(std::get<std::string>(result))});
}

} // namespace lorvane::backend
