// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/desktop/HttpExchange.h"

namespace lorvane {

/// The lines of an answer's body. Bytes are taken from the connection only while a line is asked for.
class HttpLines final : public HttpLineStream {
 public:
    /// A server that never ends a line must not fill the memory.
    static constexpr qsizetype longestLine = 4 * 1024 * 1024;

    /// `first`: what was taken of the body already.
    HttpLines(std::unique_ptr<HttpExchange> exchange, QByteArray first)
        : exchange_(std::move(exchange)), status_(exchange_->status()), pending_(std::move(first)) {}

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
