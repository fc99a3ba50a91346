// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/HttpClient.h"
#include "base/Clock.h"

namespace lorvane {

class HttpExchange;

/// HTTP/1.1 on the sockets of Qt Network, with TLS for https. A connection serves one request, so none is
/// ever found closed by the server, and no request is sent twice. Redirects are handed to the caller as the
/// status they are, there are no cookies and no cache, loopback addresses never go through a proxy, and
/// nothing of a request is logged.
class QtHttpClient final : public HttpClient {
 public:
    explicit QtHttpClient(Clock& clock) : clock_(clock) {}

    QCoro::Task<Result<HttpResponse, TransportError>> send(HttpRequest request, TaskScope scope) override;
    QCoro::Task<Result<std::unique_ptr<HttpLineStream>, TransportError>> open(HttpRequest request,
                                                                              TaskScope scope) override;

 private:
    struct Begun {
        std::unique_ptr<HttpExchange> exchange;
        QByteArray first;
    };
    QCoro::Task<Result<Begun, TransportError>> begin(HttpRequest request, TaskScope scope);

    Clock& clock_;
};

} // namespace lorvane
