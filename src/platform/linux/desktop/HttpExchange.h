// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/HttpClient.h"
#include "base/Clock.h"

#include <QNetworkReply>

#include <memory>

namespace lorvane {

/// One request under way: turns the reply's signals into waits and ends the connection with itself.
class HttpExchange {
 public:
    /// Owns the reply. `idle`: the longest wait without any progress.
    HttpExchange(QNetworkReply* reply, Duration idle, Clock& clock);
    HttpExchange(const HttpExchange&) = delete;
    HttpExchange& operator=(const HttpExchange&) = delete;
    ~HttpExchange();

    /// Comes back when the reply has moved on; false: it did not for the whole idle time. What is there by
    /// then is left to the caller to look at.
    QCoro::Task<bool> progress(TaskScope scope);

    [[nodiscard]] bool hasStatus() const { return status() > 0; }
    [[nodiscard]] int status() const;
    [[nodiscard]] bool isFinished() const { return reply_->isFinished(); }
    /// What broke the connection, apart from what a status says.
    [[nodiscard]] std::optional<TransportError> transportError() const;
    /// Closed by the other side.
    [[nodiscard]] bool wasClosed() const;
    [[nodiscard]] QByteArray take(qint64 most) { return reply_->read(most); }
    [[nodiscard]] bool hasBytes() const { return reply_->bytesAvailable() > 0; }

    static TransportError timedOut() { return {QStringLiteral("the request timed out")}; }

 private:
    void moved();

    std::unique_ptr<QObject> context_ = std::make_unique<QObject>();
    QNetworkReply* reply_;
    Duration idle_;
    Clock& clock_;
    bool moved_ = false;
    std::optional<Completion<bool>> waiter_;
};

} // namespace lorvane
