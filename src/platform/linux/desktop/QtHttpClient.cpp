// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/desktop/QtHttpClient.h"

#include "platform/linux/desktop/HttpLines.h"

#include <QHostAddress>
#include <QNetworkProxy>
#include <QNetworkRequest>

#include <algorithm>

namespace lorvane {

namespace {

constexpr qsizetype largestBody = 64 * 1024 * 1024;

bool isLoopback(const QString& host) {
    return host == QLatin1String("localhost") || QHostAddress(host).isLoopback();
}

/// The desktop's proxy settings, but never for this very machine.
class ProxyChoice final : public QNetworkProxyFactory {
 public:
    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery& query) override {
        if (isLoopback(query.peerHostName())) {
            return {QNetworkProxy(QNetworkProxy::NoProxy)};
        }
        return systemProxyForQuery(query);
    }
};

QNetworkRequest plainRequest(const HttpRequest& request) {
    QNetworkRequest result(request.url);
    result.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    result.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    result.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    result.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    result.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    result.setRawHeader("User-Agent", "Lorvane");
    // Compression would make the lines of a stream wait for each other.
    result.setRawHeader("Accept-Encoding", "identity");
    for (const auto& [name, value] : request.headers) {
        result.setRawHeader(name, value);
    }
    return result;
}

// A stored token comes from a file that anyone may have edited; a line end in it would begin another header.
bool isSafe(const HttpRequest& request) {
    const auto printable = [](const QByteArray& text) {
        return std::all_of(text.begin(), text.end(),
                           [](char c) { return static_cast<unsigned char>(c) >= 0x20 && c != 0x7f; });
    };
    return std::all_of(request.headers.begin(), request.headers.end(), [&](const auto& header) {
        return printable(header.first) && printable(header.second);
    });
}

bool isAddress(const QUrl& url) {
    return url.isValid() && !url.host().isEmpty() &&
           (url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https"));
}

QString serverOf(const QUrl& url) { return url.scheme() + QStringLiteral("://") + url.authority(); }

} // namespace

QtHttpClient::QtHttpClient(Clock& clock) : clock_(clock) { network_.setProxyFactory(new ProxyChoice); }

QtHttpClient::~QtHttpClient() = default;

std::unique_ptr<HttpExchange> QtHttpClient::post(const HttpRequest& request, qint64 readBuffer) {
    QNetworkReply* const reply =
        network_.sendCustomRequest(plainRequest(request), request.method, request.body);
    reply->setReadBufferSize(readBuffer);
    return std::make_unique<HttpExchange>(reply, request.timeout, clock_);
}

// A kept connection may have been closed by the server just as the request went out. When nothing at all
// came back the request is sent once more, on a new connection.
QCoro::Task<QtHttpClient::Started> QtHttpClient::start(HttpRequest request, qint64 readBuffer,
                                                       TaskScope scope) {
    if (!isAddress(request.url) || !isSafe(request)) {
        co_return failure(TransportError{QStringLiteral("the request cannot be sent")});
    }
    const QString server = serverOf(request.url);
    bool mayRepeat = answered_.remove(server);
    std::unique_ptr<HttpExchange> exchange = post(request, readBuffer);
    for (;;) {
        if (exchange->hasStatus()) {
            answered_.insert(server);
            co_return std::move(exchange);
        }
        if (exchange->isFinished() && mayRepeat && exchange->wasClosed()) {
            mayRepeat = false;
            exchange = post(request, readBuffer);
        }
        if (exchange->isFinished()) {
            auto error = exchange->transportError();
            co_return failure(error.value_or(TransportError{QStringLiteral("no answer")}));
        }
        const bool alive = co_await exchange->progress(scope);
        if (!alive) {
            co_return failure(HttpExchange::timedOut());
        }
    }
}

QCoro::Task<Result<HttpResponse, TransportError>> QtHttpClient::send(HttpRequest request, TaskScope scope) {
    auto started = co_await start(std::move(request), HttpLines::readBuffer, scope);
    if (!started) {
        co_return failure(std::move(started.error()));
    }
    const std::unique_ptr<HttpExchange> exchange = std::move(*started);
    HttpResponse response{exchange->status(), {}};
    for (;;) {
        while (exchange->hasBytes()) {
            response.body += exchange->take(HttpLines::readBuffer);
        }
        if (response.body.size() > largestBody) {
            co_return failure(TransportError{QStringLiteral("the answer is too large")});
        }
        if (exchange->isFinished()) {
            break;
        }
        const bool alive = co_await exchange->progress(scope);
        if (!alive) {
            co_return failure(HttpExchange::timedOut());
        }
    }
    if (auto error = exchange->transportError()) {
        co_return failure(std::move(*error));
    }
    co_return response;
}

QCoro::Task<Result<std::unique_ptr<HttpLineStream>, TransportError>> QtHttpClient::open(HttpRequest request,
                                                                                        TaskScope scope) {
    auto started = co_await start(std::move(request), HttpLines::readBuffer, scope);
    if (!started) {
        co_return failure(std::move(started.error()));
    }
    std::unique_ptr<HttpLineStream> lines = std::make_unique<HttpLines>(std::move(*started));
    co_return std::move(lines);
}

} // namespace lorvane
