// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Handlers.h"

#include "api/Dictation.h"
#include "api/Wire.h"

#include <cstdio>

namespace lorvane::backend {

namespace {

constexpr std::size_t smallBody = 16 * 1024;

void refuse(Exchange& exchange, DictationError error) {
    const auto meaning = meaningOf(error);
    exchange.note(meaning.code);
    exchange.respond({meaning.status, errorBody(meaning.code)});
}

void noteLength(Exchange& exchange, const ReadyTake& take) {
    char text[32];
    std::snprintf(text, sizeof text, "audio=%.2fs", take.seconds());
    exchange.note(text);
}

// The take of the request made ready, or nothing after the request has been answered.
std::optional<ReadyTake> readyTake(const Dictation& dictation, const Request& request, Exchange& exchange) {
    const auto read = readTake(request.contentType, request.body);
    if (const auto* malformed = std::get_if<MalformedTake>(&read)) {
        exchange.note(malformed->reason);
        exchange.respond({400, errorBody("bad_request")});
        return std::nullopt;
    }
    const auto& take = std::get<Take>(read);
    if (take.fields.translate.size() >= 2)
        exchange.note("translation not available, delivered as spoken");
    auto ready = dictation.prepare(request.device, request.takeId, take, exchange.stopToken());
    if (const auto* error = std::get_if<DictationError>(&ready)) {
        refuse(exchange, *error);
        return std::nullopt;
    }
    noteLength(exchange, std::get<ReadyTake>(ready));
    return std::move(std::get<ReadyTake>(ready));
}

void registerDevice(Storage& storage, const Request& request, Exchange& exchange) {
    const auto device = readDevice(request.body);
    if (!device)
        return exchange.respond({400, errorBody("bad_device")});
    const auto token = newToken();
    storage.registerDevice(*device, sha256(token));
    exchange.respond({200, tokenBody(token)});
}

void dictate(const Dictation& dictation, const Request& request, Exchange& exchange) {
    auto take = readyTake(dictation, request, exchange);
    if (!take)
        return;
    const auto result = dictation.run(
        *take, [](const std::string&) { return true; }, exchange.stopToken());
    if (const auto* error = std::get_if<DictationError>(&result))
        return refuse(exchange, *error);
    exchange.respond({200, dictatedBody(std::get<Dictated>(result))});
}

// Whatever can be said by a status is said before the stream begins; what comes later is said in its last
// line.
void dictateStream(const Dictation& dictation, const Request& request, Exchange& exchange) {
    auto take = readyTake(dictation, request, exchange);
    if (!take)
        return;
    exchange.startLines();
    const auto onDelta = [&](const std::string& fragment) { return exchange.writeLine(deltaLine(fragment)); };
    const auto result = dictation.run(*take, onDelta, exchange.stopToken());
    if (const auto* error = std::get_if<DictationError>(&result)) {
        exchange.note(meaningOf(*error).code);
        exchange.writeLine(errorLine(meaningOf(*error).code));
        return;
    }
    exchange.writeLine(doneLine(std::get<Dictated>(result)));
}

void transcribePart(const Dictation& dictation, const Request& request, Exchange& exchange) {
    auto take = readyTake(dictation, request, exchange);
    if (!take)
        return;
    const auto result = dictation.transcribe(*take, exchange.stopToken());
    if (const auto* error = std::get_if<DictationError>(&result))
        return refuse(exchange, *error);
    exchange.respond({200, textBody(std::get<std::string>(result))});
}

} // namespace

std::vector<Route> makeRoutes(Storage& storage, const Dictation& dictation, std::size_t takeLimit) {
    const auto onTake = [&dictation](auto handle) {
        return [&dictation, handle](const Request& request, Exchange& exchange) {
            handle(dictation, request, exchange);
        };
    };
    return {
        {"GET", "/healthz", false, false, 0,
         [](const Request&, Exchange& exchange) {
             exchange.respond({200, R"({"status":"ok"})"});
         }},
        {"POST", "/api/register", false, false, smallBody,
         [&storage](const Request& request, Exchange& exchange) {
             registerDevice(storage, request, exchange);
         }},
        {"POST", "/api/dictate", true, true, takeLimit, onTake(&dictate)},
        {"POST", "/api/dictate-stream", true, true, takeLimit, onTake(&dictateStream)},
        {"POST", "/api/transcribe-part", true, true, takeLimit, onTake(&transcribePart)},
    };
}

} // namespace lorvane::backend
