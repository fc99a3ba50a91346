// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Handlers.h"
#include "api/JsonBody.h"
#include "api/Wire.h"
#include "language/Insights.h"
#include "language/Summary.h"

namespace lorvane::backend {

namespace {

constexpr std::size_t mostTexts = 20'000;
constexpr std::size_t longestPeriod = 64;
constexpr std::size_t longestTarget = 64;
constexpr std::size_t longestText = 60 * 1024;

} // namespace

void handleInsights(const Services& services, const Request& request, Exchange& exchange) {
    const auto samples = JsonBody(request.body).texts("samples", mostTexts);
    if (!admitted(services, request, exchange, "texts", services.options.limits.texts))
        return;
    const auto insights = insightsOf(samples);
    if (!insights)
        return refuse(exchange, 422, "not_enough_data");
    exchange.respond({200, insightsBody(*insights)});
}

void handleSummary(const Services& services, const Request& request, Exchange& exchange) {
    const JsonBody body(request.body);
    const auto texts = body.texts("texts", mostTexts);
    body.text("period", longestPeriod); // counts only for who writes in words of their own
    if (!admitted(services, request, exchange, "texts", services.options.limits.texts))
        return;
    const auto summary = summaryOf(texts);
    if (summary.empty())
        return refuse(exchange, 422, "not_enough_data");
    exchange.respond({200, summaryBody(summary)});
}

void handleTranslate(const Services&, const Request& request, Exchange& exchange) {
    const JsonBody body(request.body);
    body.text("text", longestText);
    body.text("target", longestTarget);
    exchange.note("no translator");
    exchange.respond(
        {503, reasonBody("translation_unavailable", "this service has no translator: none is configured")});
}

} // namespace lorvane::backend
