// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Routes.h"

#include "api/Handlers.h"
#include "api/JsonBody.h"
#include "api/Wire.h"
#include "storage/StorageError.h"
#include "util/Log.h"

#include <array>

namespace lorvane::backend {

namespace {

constexpr std::size_t none = 0;
constexpr std::size_t small = 16 * 1024;
constexpr std::size_t letter = 64 * 1024;
constexpr std::size_t texts = std::size_t(4) << 20;
constexpr std::size_t take = ~std::size_t(0); // as configured

struct Entry {
    std::string_view method;
    std::string_view path;
    Access access;
    Work work;
    std::size_t bodyLimit;
    void (*handle)(const Services&, const Request&, Exchange&);
    std::optional<Response> (*instant)(const Services&, const Request&) = nullptr;
};

constexpr auto table = std::to_array<Entry>({
    {"POST", "/api/register", Access::open, Work::quick, small, &handleRegister},
    {"POST", "/api/dictate-stream", Access::token, Work::take, take, &handleDictateStream},
    {"POST", "/api/dictate", Access::token, Work::take, take, &handleDictate},
    {"POST", "/api/transcribe-part", Access::token, Work::take, take, &handleTranscribePart},
    {"POST", "/api/onboarded", Access::token, Work::quick, small, &handleOnboarded},
    {"POST", "/api/link", Access::token, Work::quick, small, &handleLink},
    {"GET", "/api/referral", Access::token, Work::quick, none, &handleReferral, &recallReferral},
    {"POST", "/api/invite", Access::token, Work::slow, small, &handleInvite},
    {"POST", "/api/insights", Access::token, Work::slow, texts, &handleInsights},
    {"POST", "/api/summary", Access::token, Work::slow, texts, &handleSummary},
    {"POST", "/api/translate", Access::token, Work::slow, letter, &handleTranslate},
    {"POST", "/api/feedback", Access::token, Work::slow, letter, &handleFeedback},
    {"GET", "/get", Access::open, Work::quick, none, &handleGet},
    {"GET", "/appcast.xml", Access::open, Work::slow, none, &handleAppcast},
    {"GET", "/healthz", Access::open, Work::quick, none, &handleHealth, &instantHealth},
    {"GET", "/readyz", Access::open, Work::quick, none, &handleReady},
    {"GET", "/metrics", Access::open, Work::quick, none, &handleMetrics},
});

Handler guarded(const Services& services, const Entry& entry) {
    return [&services, handle = entry.handle](const Request& request, Exchange& exchange) {
        try {
            handle(services, request, exchange);
        } catch (const BadBody& bad) {
            exchange.note(bad.what());
            exchange.respond({400, badBody(bad.what())});
        } catch (const StorageError& error) {
            logLine(std::string("the store failed: ") + error.what());
            refuse(exchange, 503, "busy");
        }
    };
}

Instant instantOf(const Services& services, const Entry& entry) {
    if (!entry.instant)
        return {};
    return
        [&services, instant = entry.instant](const Request& request) { return instant(services, request); };
}

} // namespace

std::vector<Route> makeRoutes(const Services& services) {
    std::vector<Route> routes;
    for (const auto& entry : table)
        routes.push_back({entry.method, entry.path, entry.access, entry.work,
                          entry.bodyLimit == take ? services.options.takeLimit : entry.bodyLimit,
                          guarded(services, entry), instantOf(services, entry)});
    return routes;
}

void refuse(Exchange& exchange, int status, std::string_view code) {
    exchange.note(code);
    Response response{status, errorBody(code)};
    response.retryAfter = status == 503 ? busyPause : 0;
    exchange.respond(std::move(response));
}

void agree(Exchange& exchange) { exchange.respond({200, agreedBody}); }

bool admitted(const Services& services, const Request& request, Exchange& exchange, std::string_view bucket,
              const Rate& rate) {
    try {
        const auto person = services.storage.personOf(request.device);
        if (services.storage.admit(bucket, person, rate).count() == 0)
            return true;
    } catch (const StorageError& error) {
        logLine(std::string("no limits, the store failed: ") + error.what());
        return true;
    }
    refuse(exchange, 429, "too_many");
    return false;
}

} // namespace lorvane::backend
