// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/desktop/QtHttpClient.h"

#include "platform/linux/desktop/HttpLines.h"

#include <algorithm>

namespace lorvane {

namespace {

constexpr qsizetype largestBody = 64 * 1024 * 1024;

// A stored token comes from a file that anyone may have edited; a line end in it would begin another header.
bool isSafe(const HttpRequest& request) {
    const auto printable = [](const QByteArray& text) {
        return std::all_of(text.begin(), text.end(), [](char c) {
            const auto code = static_cast<unsigned char>(c);
            return code >= 0x20 && code != 0x7f;
        });
    };
    return std::all_of(request.headers.begin(), request.headers.end(), [&](const auto& header) {
        return printable(header.first) && printable(header.second);
    });
}

bool isAddress(const QUrl& url) {
    return url.isValid() && !url.host().isEmpty() &&
           (url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https"));
}

} // namespace

// Comes back once the status is known.
QCoro::Task<Result<QtHttpClient::Begun, TransportError>> QtHttpClient::begin(HttpRequest request,
                                                                             TaskScope scope) {
    if (!isAddress(request.url) || !isSafe(request)) {
        co_return failure(TransportError{QStringLiteral("the request cannot be sent")});
    }
    auto exchange = std::make_unique<HttpExchange>(std::move(request), clock_);
    for (;;) {
        QByteArray first = exchange->take();
        if (exchange->status() > 0) {
            exchange->advanced();
            co_return Begun{std::move(exchange), std::move(first)};
        }
        if (const auto& error = exchange->transportError()) {
            co_return failure(*error);
        }
        const bool alive = co_await exchange->progress(scope);
        if (!alive) {
            co_return failure(HttpExchange::timedOut());
        }
    }
}

QCoro::Task<Result<HttpResponse, TransportError>> QtHttpClient::send(HttpRequest request, TaskScope scope) {
    auto begun = co_await begin(std::move(request), scope);
    if (!begun) {
        co_return failure(std::move(begun.error()));
    }
    const std::unique_ptr<HttpExchange> exchange = std::move(begun->exchange);
    HttpResponse response{exchange->status(), std::move(begun->first)};
    for (;;) {
        const QByteArray more = exchange->take();
        response.body += more;
        if (response.body.size() > largestBody) {
            co_return failure(TransportError{QStringLiteral("the answer is too large")});
        }
        if (!more.isEmpty()) {
            continue;
        }
        if (exchange->isFinished()) {
            break;
        }
        const bool alive = co_await exchange->progress(scope);
        if (!alive) {
            co_return failure(HttpExchange::timedOut());
        }
    }
    if (const auto& error = exchange->transportError()) {
        co_return failure(*error);
    }
    co_return response;
}

QCoro::Task<Result<std::unique_ptr<HttpLineStream>, TransportError>> QtHttpClient::open(HttpRequest request,
                                                                                        TaskScope scope) {
    auto begun = co_await begin(std::move(request), scope);
    if (!begun) {
        co_return failure(std::move(begun.error()));
    }
    std::unique_ptr<HttpLineStream> lines =
        std::make_unique<HttpLines>(std::move(begun->exchange), std::move(begun->first));
    co_return std::move(lines);
}

} // namespace lorvane
