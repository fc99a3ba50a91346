// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/ScriptedBackend.h"

#include "support/ScriptedConnection.h"

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <deque>
#include <mutex>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace lorvane {

ScriptedReply ScriptedReply::body(QByteArray text, int status) {
    ScriptedReply reply;
    reply.status = status;
    reply.pieces = {std::move(text)};
    reply.chunked = false;
    return reply;
}

ScriptedReply ScriptedReply::lines(const std::vector<QByteArray>& lines) {
    ScriptedReply reply;
    for (const QByteArray& line : lines) {
        reply.pieces.push_back(line + '\n');
    }
    return reply;
}

struct ScriptedBackend::Shared final : ConnectionHost {
    ScriptedReply next(const QByteArray& path) override;
    void received(RecordedRequest request) override;
    void closedByClient() override;
    void sentBody(qint64 bytes) override { sent += bytes; }
    [[nodiscard]] bool isEnding() const override { return ending; }
    void accept();

    mutable std::mutex mutex;
    std::map<QByteArray, std::deque<ScriptedReply>> scripts;
    std::vector<RecordedRequest> requests;
    std::optional<std::chrono::steady_clock::time_point> lastClosed;
    std::atomic<qint64> sent{0};
    std::atomic<int> open{0};
    std::atomic<bool> ending{false};
    int listener = -1;
    std::vector<std::thread> connections;
    std::thread acceptor;
};

ScriptedReply ScriptedBackend::Shared::next(const QByteArray& path) {
    const std::lock_guard lock(mutex);
    auto& script = scripts[path];
    if (script.empty()) {
        return ScriptedReply::body({}, 404);
    }
    ScriptedReply reply = script.front();
    if (script.size() > 1) {
        script.pop_front();
    }
    return reply;
}

void ScriptedBackend::Shared::received(RecordedRequest request) {
    request.arrived = std::chrono::steady_clock::now();
    const std::lock_guard lock(mutex);
    requests.push_back(std::move(request));
}

void ScriptedBackend::Shared::closedByClient() {
    const std::lock_guard lock(mutex);
    lastClosed = std::chrono::steady_clock::now();
}

void ScriptedBackend::Shared::accept() {
    for (int number = 1; !ending; ++number) {
        pollfd wanted{listener, POLLIN, 0};
        if (::poll(&wanted, 1, ScriptedConnection::lookAgain) <= 0) {
            --number;
            continue;
        }
        const int socket = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0) {
            continue;
        }
        ++open;
        connections.emplace_back([this, socket, number] {
            ScriptedConnection(socket, number, *this).serve();
            --open;
        });
    }
}

ScriptedBackend::ScriptedBackend(int port) : shared_(std::make_shared<Shared>()) {
    shared_->listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int again = 1;
    ::setsockopt(shared_->listener, SOL_SOCKET, SO_REUSEADDR, &again, sizeof again);
    sockaddr_in address{};
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::bind(shared_->listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(shared_->listener, 64) != 0) {
        throw std::runtime_error("no loopback port to listen on");
    }
    shared_->acceptor = std::thread([shared = shared_.get()] { shared->accept(); });
}

ScriptedBackend::~ScriptedBackend() {
    shared_->ending = true;
    shared_->acceptor.join();
    for (auto& connection : shared_->connections) {
        connection.join();
    }
    ::close(shared_->listener);
}

int ScriptedBackend::port() const {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    ::getsockname(shared_->listener, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

QUrl ScriptedBackend::url() const { return QUrl(QStringLiteral("http://127.0.0.1:%1").arg(port())); }

void ScriptedBackend::script(const QByteArray& path, ScriptedReply reply) {
    const std::lock_guard lock(shared_->mutex);
    shared_->scripts[path].push_back(std::move(reply));
}

void ScriptedBackend::scriptAnew(const QByteArray& path, ScriptedReply reply) {
    const std::lock_guard lock(shared_->mutex);
    shared_->scripts[path] = {std::move(reply)};
}

std::vector<RecordedRequest> ScriptedBackend::requests(const QByteArray& path) const {
    const std::lock_guard lock(shared_->mutex);
    std::vector<RecordedRequest> found;
    for (const RecordedRequest& request : shared_->requests) {
        if (path.isEmpty() || request.path == path) {
            found.push_back(request);
        }
    }
    return found;
}

std::optional<RecordedRequest> ScriptedBackend::lastRequest(const QByteArray& path) const {
    const std::lock_guard lock(shared_->mutex);
    const auto& all = shared_->requests;
    const auto found = std::find_if(all.rbegin(), all.rend(),
                                    [&](const RecordedRequest& request) { return request.path == path; });
    return found == all.rend() ? std::nullopt : std::optional(*found);
}

void ScriptedBackend::forgetEarlier(const QByteArray& path) {
    const std::lock_guard lock(shared_->mutex);
    auto& all = shared_->requests;
    const auto isOfPath = [&](const RecordedRequest& request) { return request.path == path; };
    const auto last = std::find_if(all.rbegin(), all.rend(), isOfPath);
    if (last != all.rend()) {
        const auto end = std::prev(last.base());
        all.erase(std::remove_if(all.begin(), end, isOfPath), end);
    }
}

int ScriptedBackend::openConnections() const { return shared_->open; }

std::optional<std::chrono::steady_clock::time_point> ScriptedBackend::lastClosedByClient() const {
    const std::lock_guard lock(shared_->mutex);
    return shared_->lastClosed;
}

qint64 ScriptedBackend::bodyBytesSent() const { return shared_->sent; }

} // namespace lorvane
