// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/DictationEndpoints.h"

#include <QUrl>

#include <memory>
#include <utility>
#include <vector>

namespace lorvane {

struct HttpRequest {
    QByteArray method;
    QUrl url;
    std::vector<std::pair<QByteArray, QByteArray>> headers;
    QByteArray body;
    /// The request fails when for this long no byte of it could be sent, when the status has not come this
    /// long after the last one, and then when the body has not come whole this long after the status; of a
    /// body read by lines, when nothing of it comes for this long while a line is waited for.
    Duration timeout = seconds(60);
};

struct HttpResponse {
    int status = 0;
    QByteArray body;
};

/// A response whose body is read line by line. Its end closes the connection. A consumer that takes its time
/// slows the server down: only a bounded number of bytes is ever held.
class HttpLineStream {
 public:
    virtual ~HttpLineStream() = default;
    [[nodiscard]] virtual int status() const = 0;
    /// The next line without its line end; nothing at the end of a body that came whole.
    virtual QCoro::Task<Result<std::optional<QByteArray>, TransportError>> nextLine(TaskScope scope) = 0;
};

/// Requests over HTTP. Main thread, never blocking. No redirect is followed to another host. A scope that
/// ends closes the connection within 50 ms and throws TaskCancelled.
class HttpClient {
 public:
    virtual ~HttpClient() = default;
    virtual QCoro::Task<Result<HttpResponse, TransportError>> send(HttpRequest request, TaskScope scope) = 0;
    /// Comes back with the status, before any line.
    virtual QCoro::Task<Result<std::unique_ptr<HttpLineStream>, TransportError>> open(HttpRequest request,
                                                                                      TaskScope scope) = 0;
};

} // namespace lorvane
