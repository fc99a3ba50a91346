// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/kde/HelperLink.h"

#include <QFile>
#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace lorvane {

namespace {

constexpr Duration patience = std::chrono::milliseconds(150);
constexpr std::size_t readAtOnce = 4096;

bool isOfOurUser(int socket) {
    ucred peer{};
    socklen_t size = sizeof(peer);
    return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == geteuid();
}

/// -1 when nobody listens there.
int connectTo(const QByteArray& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.isEmpty() || static_cast<std::size_t>(path.size()) >= sizeof(address.sun_path)) {
        return -1;
    }
    std::copy(path.begin(), path.end(), address.sun_path);
    const int made = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (made >= 0 && connect(made, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0 &&
        isOfOurUser(made)) {
        return made;
    }
    if (made >= 0) {
        close(made);
    }
    return -1;
}

} // namespace

HelperLink::HelperLink(Clock& clock, DiagnosticLog& log, QString path)
    : clock_(clock), log_(log), path_(std::move(path)) {}

HelperLink::~HelperLink() {
    readable_.reset();
    if (socket_ >= 0) {
        close(socket_);
    }
}

QString HelperLink::standardPath() {
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return folder.isEmpty() ? QString() : folder + QLatin1Char('/') + QLatin1String(helper::socketName);
}

bool HelperLink::isThere() { return socket_ >= 0 || connectNow(); }

bool HelperLink::connectNow() {
    socket_ = connectTo(QFile::encodeName(path_));
    if (socket_ < 0) {
        return false;
    }
    readable_ = std::make_unique<QSocketNotifier>(socket_, QSocketNotifier::Read);
    connect(readable_.get(), &QSocketNotifier::activated, this, [this] { readAll(); });
    return send(helper::Hello{});
}

QCoro::Task<helper::ContextState> HelperLink::context(TaskScope scope) {
    if (socket_ < 0 && !connectNow()) {
        co_return helper::ContextState{};
    }
    if (!knowsState_) {
        const Completion<bool> known;
        stateWaiter_ = known;
        const Handle limit = clock_.after(patience, [known] { known.complete(false); });
        (void)co_await known.wait(scope);
    }
    co_return state_;
}

QCoro::Task<std::optional<bool>> HelperLink::commit(std::uint32_t context, QString text, TaskScope scope) {
    const std::string bytes = text.toStdString();
    const std::uint32_t request = ++lastRequest_;
    if (socket_ < 0 || !helper::isCommittable(bytes)) {
        co_return false;
    }
    const Completion<std::optional<bool>> answer;
    answers_.insert_or_assign(request, answer);
    if (!send(helper::Commit{request, context, bytes})) {
        answers_.erase(request);
        co_return false;
    }
    const Handle limit = clock_.after(patience, [answer] { answer.complete(std::nullopt); });
    const std::optional<bool> done = co_await answer.wait(scope);
    answers_.erase(request);
    co_return done;
}

void HelperLink::readAll() {
    std::array<char, readAtOnce> bytes{};
    const ssize_t count = recv(socket_, bytes.data(), bytes.size(), 0);
    if (count <= 0) {
        if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
            leave(QStringLiteral("it has ended"));
        }
        return;
    }
    decoder_.feed({bytes.data(), static_cast<std::size_t>(count)});
    while (socket_ >= 0) {
        const auto message = decoder_.next();
        if (!message) {
            break;
        }
        handle(*message);
    }
    if (decoder_.isBroken()) {
        leave(QStringLiteral("it says what is no message"));
    }
}

void HelperLink::handle(const helper::Message& message) {
    if (const auto* const hello = std::get_if<helper::Hello>(&message)) {
        hasGreeted_ = hello->version == helper::wireVersion;
        if (!hasGreeted_) {
            leave(QStringLiteral("it speaks version %1").arg(hello->version));
        }
    } else if (const auto* const state = std::get_if<helper::ContextState>(&message); state && hasGreeted_) {
        state_ = *state;
        knowsState_ = true;
        if (const auto waiter = std::exchange(stateWaiter_, std::nullopt)) {
            waiter->complete(true);
        }
    } else if (const auto* const done = std::get_if<helper::Committed>(&message); done && hasGreeted_) {
        if (const auto found = answers_.find(done->request); found != answers_.end()) {
            const auto answer = found->second;
            answer.complete(done->isDone);
        }
    } else {
        leave(QStringLiteral("it says what is not its turn"));
    }
}

bool HelperLink::send(const helper::Message& message) {
    const std::string bytes = helper::encode(message);
    const ssize_t sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent == static_cast<ssize_t>(bytes.size())) {
        return true;
    }
    leave(QStringLiteral("it does not read"));
    return false;
}

void HelperLink::leave(const QString& reason) {
    if (reason != lastReason_) {
        log_.diagLog(QStringLiteral("[tirra-kde] the input method helper is left: %1").arg(reason));
    }
    lastReason_ = reason;
    if (readable_) {
        readable_->setEnabled(false);
        readable_.release()->deleteLater(); // it may be the one that tells just now
    }
    close(socket_);
    socket_ = -1;
    decoder_ = {};
    hasGreeted_ = false;
    knowsState_ = false;
    state_ = {};
    if (const auto waiter = std::exchange(stateWaiter_, std::nullopt)) {
        waiter->complete(false);
    }
    const auto answers = std::exchange(answers_, {});
    for (const auto& [request, answer] : answers) {
        answer.complete(std::nullopt);
    }
}

} // namespace lorvane
