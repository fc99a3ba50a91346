// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/desktop/HttpExchange.h"

namespace lorvane {

/// The lines of a reply's body. Bytes are taken from the reply only while a line is asked for, so a slow
/// consumer fills the reply's bounded buffer and then the socket's.
class HttpLines final : public HttpLineStream {
 public:
    /// What the reply may hold back, and the longest line that is taken.
    static constexpr qint64 readBuffer = 64 * 1024;
    static constexpr qsizetype longestLine = 4 * 1024 * 1024;

    explicit HttpLines(std::unique_ptr<HttpExchange> exchange)
        : exchange_(std::move(exchange)), status_(exchange_->status()) {}

    [[nodiscard]] int status() const override { return status_; }
    QCoro::Task<Result<std::optional<QByteArray>, TransportError>> nextLine(TaskScope scope) override;

 private:
    using Line = Result<std::optional<QByteArray>, TransportError>;
    [[nodiscard]] std::optional<QByteArray> takeLine();
    [[nodiscard]] Line atEnd();

    std::unique_ptr<HttpExchange> exchange_;
    int status_;
    QByteArray pending_;
    qsizetype searched_ = 0;
};

} // namespace lorvane
