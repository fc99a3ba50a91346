// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/ScriptedBackend.h"

namespace lorvane {

/// What a connection of the scripted backend needs of it. Any thread.
class ConnectionHost {
 public:
    virtual ~ConnectionHost() = default;
    virtual ScriptedReply next(const QByteArray& path) = 0;
    virtual void received(RecordedRequest request) = 0;
    virtual void closedByClient() = 0;
    virtual void sentBody(qint64 bytes) = 0;
    [[nodiscard]] virtual bool isEnding() const = 0;
};

/// One connection, served on the thread that calls `serve`, until either side closes it.
class ScriptedConnection {
 public:
    /// Milliseconds after which a wait looks whether the server is ending.
    static constexpr int lookAgain = 5;

    ScriptedConnection(int socket, int number, ConnectionHost& host)
        : socket_(socket), number_(number), host_(host) {}
    ScriptedConnection(const ScriptedConnection&) = delete;
    ScriptedConnection& operator=(const ScriptedConnection&) = delete;
    ~ScriptedConnection();

    void serve();

 private:
    std::optional<RecordedRequest> readRequest();
    bool receive();
    bool answer(const ScriptedReply& reply);
    bool sendHead(const ScriptedReply& reply);
    bool sendBody(const ScriptedReply& reply);
    bool sendPiece(const QByteArray& piece, const ScriptedReply& reply);
    bool send(const QByteArray& bytes);
    /// False when the client or the server ended meanwhile.
    bool pause(std::chrono::milliseconds time);
    bool clientIsThere();

    int socket_;
    int number_;
    ConnectionHost& host_;
    QByteArray input_;
    qint64 bodySent_ = 0;
};

} // namespace lorvane
