// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/HttpClient.h"
#include "base/Clock.h"
#include "platform/linux/desktop/HttpAnswer.h"

#include <QTcpSocket>

#include <memory>

namespace lorvane {

/// One request on a connection of its own: turns the socket's signals into waits and closes the connection
/// with itself. The socket's read buffer is bounded, and bytes are taken from it only when they are asked
/// for, so a slow reader fills it and then stops the server. (QNetworkReply's own bound does not hold for a
/// chunked body: it reads all that comes.)
class HttpExchange {
 public:
    HttpExchange(HttpRequest request, Clock& clock);
    HttpExchange(const HttpExchange&) = delete;
    HttpExchange& operator=(const HttpExchange&) = delete;
    ~HttpExchange();

    /// Comes back when something has moved; false: the request's time-out is over, which began with the first
    /// wait since the last byte was sent or `advanced` was called. What is there by then is left to the
    /// caller to look at.
    QCoro::Task<bool> progress(TaskScope scope);
    /// What has moved was worth waiting for: the time-out begins anew.
    void advanced() { deadline_.reset(); }

    [[nodiscard]] int status() const { return answer_.status(); }
    /// Bytes of the body, at most a few KiB; empty when none are there now.
    [[nodiscard]] QByteArray take();
    /// The body came whole or the connection broke; asked once `take` gives nothing.
    [[nodiscard]] bool isFinished() const { return answer_.isComplete() || error_; }
    [[nodiscard]] const std::optional<TransportError>& transportError() const { return error_; }

    static TransportError timedOut() { return {QStringLiteral("the request timed out")}; }

 private:
    void connectToServer();
    void sendRequest();
    void moved();

    HttpRequest request_;
    Clock& clock_;
    std::unique_ptr<QObject> context_ = std::make_unique<QObject>();
    std::unique_ptr<QTcpSocket> socket_;
    HttpAnswer answer_;
    QByteArray body_;
    std::optional<TransportError> error_;
    bool moved_ = false;
    std::optional<Completion<bool>> waiter_;
    std::optional<Instant> deadline_;
};

} // namespace lorvane
