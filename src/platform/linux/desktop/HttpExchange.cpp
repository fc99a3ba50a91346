// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/desktop/HttpExchange.h"

#include <QHostAddress>
#include <QNetworkProxy>
#include <QSslSocket>

namespace lorvane {

namespace {

constexpr qint64 socketBuffer = 64 * 1024;
constexpr qint64 portion = 16 * 1024;

bool isEncrypted(const QUrl& url) { return url.scheme() == QLatin1String("https"); }

// The desktop's proxy settings, but never for this very machine.
QNetworkProxy proxyFor(const QUrl& url) {
    if (url.host() == QLatin1String("localhost") || QHostAddress(url.host()).isLoopback()) {
        return QNetworkProxy(QNetworkProxy::NoProxy);
    }
    QNetworkProxy proxy = QNetworkProxyFactory::systemProxyForQuery(QNetworkProxyQuery(url)).value(0);
    if (proxy.type() == QNetworkProxy::HttpCachingProxy) {
        proxy.setType(QNetworkProxy::HttpProxy);
    }
    return proxy;
}

QByteArray head(const HttpRequest& request) {
    const QUrl& url = request.url;
    QByteArray target = url.path(QUrl::FullyEncoded).toLatin1();
    target = target.isEmpty() ? QByteArray("/") : target;
    if (url.hasQuery()) {
        target += '?' + url.query(QUrl::FullyEncoded).toLatin1();
    }
    const QByteArray host = url.authority(QUrl::FullyEncoded | QUrl::RemoveUserInfo).toLatin1();
    QByteArray text = request.method + ' ' + target +
                      " HTTP/1.1\r\nHost: " + host.mid(host.indexOf('@') + 1) +
                      "\r\nUser-Agent: Lorvane\r\nAccept-Encoding: identity\r\nConnection: close\r\n"
                      "Content-Length: " +
                      QByteArray::number(request.body.size()) + "\r\n";
    for (const auto& [name, value] : request.headers) {
        text += name + ": " + value + "\r\n";
    }
    return text + "\r\n";
}

} // namespace

HttpExchange::HttpExchange(HttpRequest request, Clock& clock) : request_(std::move(request)), clock_(clock) {
    // TLS is only loaded where it is needed.
    socket_ = isEncrypted(request_.url) ? std::make_unique<QSslSocket>() : std::make_unique<QTcpSocket>();
    socket_->setReadBufferSize(socketBuffer);
    socket_->setProxy(proxyFor(request_.url));
    QObject* const context = context_.get();
    const auto onMove = [this] { moved(); };
    QObject::connect(socket_.get(), &QTcpSocket::readyRead, context, onMove);
    QObject::connect(socket_.get(), &QTcpSocket::bytesWritten, context, [this] {
        advanced();
        moved();
    });
    QObject::connect(socket_.get(), &QTcpSocket::disconnected, context, onMove);
    QObject::connect(socket_.get(), &QTcpSocket::errorOccurred, context, onMove);
    connectToServer();
}

HttpExchange::~HttpExchange() {
    context_.reset();
    socket_->abort();
    // This may run inside one of the socket's signals.
    socket_.release()->deleteLater();
}

void HttpExchange::connectToServer() {
    const QUrl& url = request_.url;
    if (auto* const encrypted = qobject_cast<QSslSocket*>(socket_.get())) {
        QObject::connect(encrypted, &QSslSocket::encrypted, context_.get(), [this] { sendRequest(); });
        encrypted->connectToHostEncrypted(url.host(), static_cast<quint16>(url.port(443)));
        return;
    }
    QObject::connect(socket_.get(), &QTcpSocket::connected, context_.get(), [this] { sendRequest(); });
    socket_->connectToHost(url.host(), static_cast<quint16>(url.port(80)));
}

void HttpExchange::sendRequest() {
    socket_->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    socket_->write(head(request_));
    socket_->write(request_.body);
    moved();
}

QCoro::Task<bool> HttpExchange::progress(TaskScope scope) {
    const Instant now = clock_.now();
    const Instant deadline = deadline_.value_or(now + request_.timeout);
    deadline_ = deadline;
    if (deadline <= now) {
        co_return false;
    }
    if (std::exchange(moved_, false)) {
        co_return true;
    }
    const Completion<bool> arrival;
    waiter_ = arrival;
    const Handle timer = clock_.after(deadline - now, [arrival] { arrival.complete(false); });
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

QByteArray HttpExchange::take() {
    while (body_.isEmpty() && !isFinished() && socket_->bytesAvailable() > 0) {
        body_ = answer_.feed(socket_->read(portion));
    }
    if (body_.isEmpty() && !isFinished() && socket_->state() == QAbstractSocket::UnconnectedState) {
        answer_.close();
    }
    if (answer_.isBroken() && !error_) {
        const int code = static_cast<int>(socket_->error());
        error_ = TransportError{QStringLiteral("the connection broke (%1)").arg(code)};
    }
    return std::exchange(body_, QByteArray());
}

} // namespace lorvane
