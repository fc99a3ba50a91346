// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Handlers.h"
#include "api/JsonBody.h"
#include "api/Wire.h"
#include "language/Linguist.h"

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
    const auto insights = services.linguist.insights(samples, exchange.stopToken());
    if (!insights)
        return refuse(exchange, 422, "not_enough_data");
    exchange.respond({200, insightsBody(*insights)});
}

void handleSummary(const Services& services, const Request& request, Exchange& exchange) {
    const JsonBody body(request.body);
    const auto texts = body.texts("texts", mostTexts);
    const auto period = body.text("period", longestPeriod);
    if (!admitted(services, request, exchange, "texts", services.options.limits.texts))
        return;
    const auto summary = services.linguist.summary(texts, period, exchange.stopToken());
    if (summary.empty())
        return refuse(exchange, 422, "not_enough_data");
    exchange.respond({200, summaryBody(summary)});
}

void handleTranslate(const Services& services, const Request& request, Exchange& exchange) {
    const JsonBody body(request.body);
    const auto text = body.text("text", longestText);
    const auto target = body.text("target", longestTarget);
    if (!admitted(services, request, exchange, "texts", services.options.limits.texts))
        return;
    if (text.find_first_not_of(" \t\r\n") == std::string::npos)
        return exchange.respond({200, textBody("")});
    const auto translation = services.linguist.translate(
        text, {}, target, [](const std::string&) { return true; }, exchange.stopToken());
    if (!translation.text.empty())
        return exchange.respond({200, textBody(translation.text)});
    exchange.note(translation.reason);
    exchange.respond({503, reasonBody("translation_unavailable", translation.reason)});
}

} // namespace lorvane::backend
