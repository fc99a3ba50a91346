// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/HttpClient.h"
#include "base/Clock.h"

#include <QNetworkAccessManager>
#include <QSet>

namespace lorvane {

class HttpExchange;

/// HTTP/1.1 by Qt Network. Redirects are handed to the caller as the status they are, cookies and caches are
/// not used, loopback addresses never go through a proxy, and nothing of a request is logged.
class QtHttpClient final : public HttpClient {
 public:
    explicit QtHttpClient(Clock& clock);
    ~QtHttpClient() override;

    QCoro::Task<Result<HttpResponse, TransportError>> send(HttpRequest request, TaskScope scope) override;
    QCoro::Task<Result<std::unique_ptr<HttpLineStream>, TransportError>> open(HttpRequest request,
                                                                              TaskScope scope) override;

 private:
    using Started = Result<std::unique_ptr<HttpExchange>, TransportError>;
    QCoro::Task<Started> start(HttpRequest request, qint64 readBuffer, TaskScope scope);
    [[nodiscard]] std::unique_ptr<HttpExchange> post(const HttpRequest& request, qint64 readBuffer);

    Clock& clock_;
    QNetworkAccessManager network_;
    /// Servers that have answered: a connection to one of them may be an old one that has just been closed.
    QSet<QString> answered_;
};

} // namespace lorvane
