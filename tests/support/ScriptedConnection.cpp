// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/ScriptedConnection.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace lorvane {

ScriptedConnection::~ScriptedConnection() { ::close(socket_); }

void ScriptedConnection::serve() {
    ::fcntl(socket_, F_SETFL, ::fcntl(socket_, F_GETFL) | O_NONBLOCK);
    for (;;) {
        const auto request = readRequest();
        if (!request) {
            return;
        }
        host_.received(*request);
        const ScriptedReply reply = host_.next(request->path);
        if (reply.dropsAtOnce || !answer(reply) || !reply.keepAlive) {
            return;
        }
    }
}

std::optional<RecordedRequest> ScriptedConnection::readRequest() {
    qsizetype head = -1;
    while ((head = input_.indexOf("\r\n\r\n")) < 0) {
        if (!receive()) {
            return std::nullopt;
        }
    }
    const QList<QByteArray> lines = input_.left(head).split('\n');
    const QList<QByteArray> first = lines.front().trimmed().split(' ');
    RecordedRequest request{first.value(0), first.value(1), {}, {}, number_};
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const qsizetype colon = lines[i].indexOf(':');
        request.headers[lines[i].left(colon).trimmed().toLower()] = lines[i].mid(colon + 1).trimmed();
    }
    const qsizetype size = request.headers["content-length"].toLongLong();
    while (input_.size() < head + 4 + size) {
        if (!receive()) {
            return std::nullopt;
        }
    }
    request.body = input_.mid(head + 4, size);
    input_.remove(0, head + 4 + size);
    return request;
}

bool ScriptedConnection::receive() {
    while (!host_.isEnding()) {
        pollfd wanted{socket_, POLLIN, 0};
        if (::poll(&wanted, 1, lookAgain) <= 0) {
            continue;
        }
        QByteArray bytes(65536, Qt::Uninitialized);
        const ssize_t count = ::recv(socket_, bytes.data(), static_cast<std::size_t>(bytes.size()), 0);
        if (count <= 0) {
            host_.closedByClient();
            return false;
        }
        input_.append(bytes.constData(), count);
        return true;
    }
    return false;
}

bool ScriptedConnection::answer(const ScriptedReply& reply) {
    if (reply.neverAnswers) {
        while (pause(std::chrono::milliseconds(lookAgain))) {
        }
        return false;
    }
    return pause(reply.beforeStatus) && sendHead(reply) && sendBody(reply);
}

bool ScriptedConnection::sendHead(const ScriptedReply& reply) {
    QByteArray head = "HTTP/1.1 " + QByteArray::number(reply.status) + " Scripted\r\n";
    for (const auto& [name, value] : reply.headers) {
        head += name + ": " + value + "\r\n";
    }
    qsizetype size = 0;
    for (const QByteArray& piece : reply.pieces) {
        size += piece.size();
    }
    head += reply.chunked ? QByteArray("Transfer-Encoding: chunked\r\n")
                          : "Content-Length: " + QByteArray::number(size) + "\r\n";
    head += reply.keepAlive ? "\r\n" : "Connection: close\r\n\r\n";
    return send(head);
}

bool ScriptedConnection::sendBody(const ScriptedReply& reply) {
    bodySent_ = 0;
    if (reply.dropAfter == 0) {
        return false;
    }
    for (const QByteArray& piece : reply.pieces) {
        if (!sendPiece(piece, reply)) {
            return false;
        }
    }
    while (reply.more) {
        const auto piece = reply.more();
        if (!piece) {
            break;
        }
        if (!sendPiece(*piece, reply)) {
            return false;
        }
    }
    if (reply.endsInTheMiddle && reply.endsInTheMiddle()) {
        return false;
    }
    return !reply.chunked || send("0\r\n\r\n");
}

bool ScriptedConnection::sendPiece(const QByteArray& piece, const ScriptedReply& reply) {
    if (piece.isEmpty()) { // nothing to say yet
        return pause(std::chrono::milliseconds(0));
    }
    const bool drops = reply.dropAfter && bodySent_ + piece.size() >= *reply.dropAfter;
    const QByteArray part = drops ? piece.left(*reply.dropAfter - bodySent_) : piece;
    const QByteArray framing = reply.chunked ? QByteArray::number(piece.size(), 16) + "\r\n" : QByteArray();
    const QByteArray end = reply.chunked && !drops ? "\r\n" : "";
    if (!send(framing + part + end)) {
        return false;
    }
    bodySent_ += part.size();
    host_.sentBody(part.size());
    return !drops && pause(reply.betweenPieces);
}

bool ScriptedConnection::send(const QByteArray& bytes) {
    qsizetype done = 0;
    while (done < bytes.size() && !host_.isEnding()) {
        const ssize_t count = ::send(socket_, bytes.constData() + done,
                                     static_cast<std::size_t>(bytes.size() - done), MSG_NOSIGNAL);
        if (count >= 0) {
            done += count;
            continue;
        }
        if (errno != EAGAIN) {
            host_.closedByClient();
            return false;
        }
        pollfd wanted{socket_, POLLOUT, 0};
        ::poll(&wanted, 1, lookAgain);
    }
    return done == bytes.size();
}

bool ScriptedConnection::pause(std::chrono::milliseconds time) {
    const auto end = std::chrono::steady_clock::now() + time;
    for (;;) {
        if (host_.isEnding() || !clientIsThere()) {
            return false;
        }
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            return true;
        }
        pollfd wanted{socket_, POLLRDHUP, 0};
        ::poll(&wanted, 1, static_cast<int>(std::min<qint64>(lookAgain, left.count())));
    }
}

bool ScriptedConnection::clientIsThere() {
    pollfd wanted{socket_, POLLRDHUP, 0};
    if (::poll(&wanted, 1, 0) > 0 && (wanted.revents & (POLLRDHUP | POLLHUP | POLLERR)) != 0) {
        host_.closedByClient();
        return false;
    }
    return true;
}

} // namespace lorvane
