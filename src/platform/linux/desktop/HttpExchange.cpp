// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/desktop/HttpExchange.h"

namespace lorvane {

HttpExchange::HttpExchange(QNetworkReply* reply, Duration idle, Clock& clock)
    : reply_(reply), idle_(idle), clock_(clock) {
    const auto onMove = [this] { moved(); };
    QObject::connect(reply_, &QNetworkReply::metaDataChanged, context_.get(), onMove);
    QObject::connect(reply_, &QNetworkReply::readyRead, context_.get(), onMove);
    QObject::connect(reply_, &QNetworkReply::uploadProgress, context_.get(), onMove);
    QObject::connect(reply_, &QNetworkReply::encrypted, context_.get(), onMove);
    QObject::connect(reply_, &QNetworkReply::finished, context_.get(), onMove);
}

HttpExchange::~HttpExchange() {
    context_.reset();
    if (!reply_->isFinished()) {
        reply_->abort();
    }
    reply_->deleteLater();
}

QCoro::Task<bool> HttpExchange::progress(TaskScope scope) {
    if (std::exchange(moved_, false)) {
        co_return true;
    }
    const Completion<bool> arrival;
    waiter_ = arrival;
    const Handle timer = clock_.after(idle_, [arrival] { arrival.complete(false); });
    co_return co_await arrival.wait(scope);
}

// The waiter may end this exchange: nothing is touched after it was told.
void HttpExchange::moved() {
    if (const auto waiter = std::exchange(waiter_, std::nullopt)) {
        waiter->complete(true);
    } else {
        moved_ = true;
    }
}

int HttpExchange::status() const {
    return reply_->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

std::optional<TransportError> HttpExchange::transportError() const {
    const auto error = reply_->error();
    // Codes from 200 on repeat what the status says.
    const bool saidByStatus = error > QNetworkReply::UnknownProxyError && hasStatus() &&
                              error != QNetworkReply::ProtocolFailure &&
                              error != QNetworkReply::ProtocolUnknownError;
    if (error == QNetworkReply::NoError || saidByStatus) {
        return std::nullopt;
    }
    // Not Qt's own text, which may quote the address with what stands in it.
    return TransportError{QStringLiteral("network error %1").arg(static_cast<int>(error))};
}

bool HttpExchange::wasClosed() const { return reply_->error() == QNetworkReply::RemoteHostClosedError; }

} // namespace lorvane
