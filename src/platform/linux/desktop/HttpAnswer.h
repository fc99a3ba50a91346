// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>

namespace lorvane {

/// Takes an HTTP/1.1 answer apart as its bytes arrive (RFC 9112): status, then the body's bytes with the
/// transfer's own framing removed. Knows nothing of sockets.
class HttpAnswer {
 public:
    /// The bytes that the body gains.
    QByteArray feed(const QByteArray& bytes);
    /// The connection has been closed by the other side.
    void close();

    /// 0 until the head is complete.
    [[nodiscard]] int status() const { return status_; }
    [[nodiscard]] bool isComplete() const { return state_ == State::complete; }
    /// It is no HTTP, or it ended too early.
    [[nodiscard]] bool isBroken() const { return state_ == State::broken; }

 private:
    enum class State { head, counted, untilClose, chunkSize, chunk, chunkEnd, trailer, complete, broken };
    bool step(QByteArray& body);
    bool readHead();
    bool readCounted(QByteArray& body, State after);
    bool readChunkSize();
    bool readLine(QByteArray& line);
    bool readTrailer();
    bool spend(qsizetype bytes);
    void beginBody(const QList<QByteArray>& lines);
    void beginCounted(const QByteArray& digits);

    State state_ = State::head;
    int status_ = 0;
    qint64 left_ = 0;
    /// Of heads and trailers, all together.
    qsizetype spent_ = 0;
    QByteArray input_;
};

} // namespace lorvane
