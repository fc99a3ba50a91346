// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Handlers.h"
#include "api/Markup.h"
#include "api/Metrics.h"
#include "api/ReleaseFeed.h"
#include "api/Wire.h"
#include "storage/StorageError.h"

namespace lorvane::backend {

void handleGet(const Services& services, const Request& request, Exchange& exchange) {
    exchange.respond(
        {200, landingPage(request.query, services.options.downloadUrl), "text/html; charset=utf-8"});
}

void handleAppcast(const Services& services, const Request&, Exchange& exchange) {
    auto feed = services.releases.xml();
    if (!feed)
        return refuse(exchange, 404, "no_releases");
    exchange.respond({200, std::move(*feed), "application/rss+xml; charset=utf-8"});
}

void handleHealth(const Services&, const Request&, Exchange& exchange) { agree(exchange); }

// Also while every pool is busy.
std::optional<Response> instantHealth(const Services&, const Request&) { return Response{200, agreedBody}; }

void handleReady(const Services& services, const Request&, Exchange& exchange) {
    const auto reason = services.unready();
    if (!reason.empty()) {
        exchange.note(reason);
        return exchange.respond({503, reasonBody("not_ready", reason)});
    }
    try {
        services.storage.deviceOfToken({});
    } catch (const StorageError& error) {
        exchange.note(error.what());
        return exchange.respond({503, reasonBody("not_ready", "the token store is away")});
    }
    agree(exchange);
}

void handleMetrics(const Services& services, const Request&, Exchange& exchange) {
    exchange.respond({200, services.metrics.text(), "text/plain; version=0.0.4; charset=utf-8"});
}

} // namespace lorvane::backend
