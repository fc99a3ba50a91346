// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "base/DiagnosticLog.h"
#include "base/Signal.h"
#include "platform/linux/wlroots/IpcFrames.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>
#include <QStringList>

#include <deque>
#include <functional>

namespace lorvane {

/// The compositor's command socket, for sway and others with the same commands. Connects by itself, again
/// after a loss, and waits for nothing. What a broken or hostile peer says ends the connection. Main thread.
class CompositorSocket {
 public:
    using Reply = std::function<void(const QJsonDocument& answer)>;
    struct Event {
        std::uint32_t type = 0;
        QJsonObject body;
    };
    static constexpr Duration retryPeriod = std::chrono::seconds(2);

    /// `places`: where the socket may be, best first; asked before each attempt.
    CompositorSocket(Clock& clock, DiagnosticLog& log, std::function<QStringList()> places);
    CompositorSocket(const CompositorSocket&) = delete;
    CompositorSocket& operator=(const CompositorSocket&) = delete;
    ~CompositorSocket();

    /// $SWAYSOCK and $I3SOCK, then what a compositor that started later has left in $XDG_RUNTIME_DIR.
    [[nodiscard]] static QStringList standardPlaces();

    /// Begins to connect; told by `onConnected`.
    void start();
    [[nodiscard]] bool isConnected() const { return socket_.state() == QLocalSocket::ConnectedState; }
    /// Nothing is sent, and `reply` never called, without a connection. Answers come in order; a loss drops
    /// what is open.
    void request(std::uint32_t type, const QByteArray& payload, Reply reply = {});
    /// In several messages where they are many: sway reads none that is larger than its socket's buffer.
    /// `reply` comes once for each message.
    void run(const QStringList& commands, const Reply& reply = {});
    /// Who waited for answers is gone.
    void forgetReplies();
    /// Waits until everything that was sent has been answered, at most for a moment. For the end of the
    /// program: sway drops what it has not read when a connection ends.
    void settle();

    [[nodiscard]] Handle onConnected(std::function<void()> told) {
        return connected_.subscribe(std::move(told));
    }
    [[nodiscard]] Handle onLost(std::function<void()> told) { return lost_.subscribe(std::move(told)); }
    [[nodiscard]] Handle onEvent(std::function<void(const Event&)> told) {
        return events_.subscribe(std::move(told));
    }

 private:
    struct Open {
        std::uint32_t type;
        Reply reply;
    };
    void tryNext();
    void retryLater();
    void connected();
    void lose(const QString& reason);
    void read();
    void handle(const IpcMessage& message);

    Clock& clock_;
    DiagnosticLog& log_;
    std::function<QStringList()> places_;
    QStringList untried_;
    QLocalSocket socket_;
    IpcReader reader_;
    std::deque<Open> open_;
    bool wasConnected_ = false;
    Signal<> connected_;
    Signal<> lost_;
    Signal<Event> events_;
    Handle retry_;
};

} // namespace lorvane
