// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/SessionHands.h"

#include <stdexcept>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace lorvane::hands {

namespace {

QByteArray path() { return qgetenv("LORVANE_HANDS"); }

[[noreturn]] void fail(const QByteArray& what) {
    throw std::runtime_error("the session's hands: " + what.toStdString());
}

class Connection {
 public:
    Connection() : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        const QByteArray name = path();
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        if (name.size() >= static_cast<qsizetype>(sizeof address.sun_path))
            fail("the path is too long: " + name);
        std::copy(name.begin(), name.end(), address.sun_path);
        if (::connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
            fail("nobody listens at " + name);
    }
    ~Connection() { ::close(socket_); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    QByteArray ask(const QByteArray& line) const {
        if (::send(socket_, line.constData(), static_cast<size_t>(line.size()), MSG_NOSIGNAL) != line.size())
            fail("they take nothing");
        QByteArray answer;
        while (!answer.endsWith('\n')) {
            char buffer[4096];
            const ssize_t count = ::recv(socket_, buffer, sizeof buffer, 0);
            if (count <= 0)
                fail("they are gone");
            answer.append(buffer, count);
        }
        return answer;
    }

 private:
    int socket_;
};

} // namespace

bool areThere() { return !path().isEmpty(); }

QJsonValue ask(const QJsonArray& request) {
    const QByteArray line = QJsonDocument(request).toJson(QJsonDocument::Compact) + '\n';
    const auto answer = QJsonDocument::fromJson(Connection().ask(line)).object();
    if (!answer.contains(QStringLiteral("ok")))
        fail(answer.value(QStringLiteral("error")).toString().toUtf8() + " on " + line.trimmed());
    return answer.value(QStringLiteral("ok"));
}

} // namespace lorvane::hands
