// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace lorvane {

/// What the server does with one request. The body goes out piece by piece.
struct ScriptedReply {
    int status = 200;
    std::vector<std::pair<QByteArray, QByteArray>> headers = {};
    std::vector<QByteArray> pieces = {};
    /// Makes the pieces after `pieces`, one a call, until it gives none.
    std::function<std::optional<QByteArray>()> more = {};
    std::chrono::milliseconds beforeStatus{0};
    std::chrono::milliseconds betweenPieces{0};
    /// Chunked transfer; else a Content-Length over `pieces`.
    bool chunked = true;
    /// Closes the connection once this many bytes of the body are out; 0: after the headers.
    std::optional<qint64> dropAfter = std::nullopt;
    /// Asked at the end of the body: whether the connection is closed as if there were more to come.
    std::function<bool()> endsInTheMiddle = {};
    /// Closes the connection before anything is said.
    bool dropsAtOnce = false;
    bool neverAnswers = false;
    bool keepAlive = true;

    static ScriptedReply body(QByteArray text, int status = 200);
    static ScriptedReply lines(const std::vector<QByteArray>& lines);
};

struct RecordedRequest {
    QByteArray method;
    QByteArray path;
    /// Names in lower case.
    std::map<QByteArray, QByteArray> headers;
    QByteArray body;
    int connection = 0;
    /// When its last byte had come.
    std::chrono::steady_clock::time_point arrived = {};
};

/// A real HTTP server on a loopback port, with threads of its own, that does what a test says. Each path
/// plays its script and repeats the last entry; a path without a script answers 404.
class ScriptedBackend {
 public:
    /// On a free port; or on the one that is given, as a backend that is started again.
    explicit ScriptedBackend(int port = 0);
    ScriptedBackend(const ScriptedBackend&) = delete;
    ScriptedBackend& operator=(const ScriptedBackend&) = delete;
    ~ScriptedBackend();

    [[nodiscard]] QUrl url() const;
    [[nodiscard]] int port() const;
    void script(const QByteArray& path, ScriptedReply reply);
    /// The same in place of all that was scripted for the path.
    void scriptAnew(const QByteArray& path, ScriptedReply reply);

    /// The complete requests so far; of one path when it is given.
    [[nodiscard]] std::vector<RecordedRequest> requests(const QByteArray& path = {}) const;
    [[nodiscard]] std::optional<RecordedRequest> lastRequest(const QByteArray& path) const;
    /// Drops all requests of a path but the latest, for one that is asked without end.
    void forgetEarlier(const QByteArray& path);
    [[nodiscard]] int openConnections() const;
    /// Since when the last connection that the client closed has been closed.
    [[nodiscard]] std::optional<std::chrono::steady_clock::time_point> lastClosedByClient() const;
    /// Bytes of bodies handed to the sockets.
    [[nodiscard]] qint64 bodyBytesSent() const;

 private:
    struct Shared;
    std::shared_ptr<Shared> shared_;
};

} // namespace lorvane
