// SPDX-License-Identifier: GPL-3.0-or-later
#include "testing/ScriptedUpstream.h"

#include <array>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace lorvane::backend::testing {

namespace {

constexpr int lookEvery = 10; // ms

bool readable(int socket) {
    pollfd entry{socket, POLLIN, 0};
    return ::poll(&entry, 1, lookEvery) > 0;
}

bool hungUp(int socket) {
    pollfd entry{socket, POLLRDHUP, 0};
    return ::poll(&entry, 1, lookEvery) > 0;
}

std::size_t lengthIn(const std::string& head) {
    const auto at = head.find("Content-Length: ");
    return at == std::string::npos ? 0 : std::stoul(head.substr(at + 16));
}

} // namespace

ScriptedUpstream::ScriptedUpstream(Script script)
    : script_(std::move(script)), listening_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (::bind(listening_, reinterpret_cast<sockaddr*>(&address), size) != 0 || ::listen(listening_, 64) != 0)
        throw std::runtime_error("cannot listen");
    ::getsockname(listening_, reinterpret_cast<sockaddr*>(&address), &size);
    port_ = ntohs(address.sin_port);
    accepting_ = std::thread([this] {
        while (!ending_)
            if (readable(listening_))
                threads_.emplace_back(
                    [this, socket = ::accept(listening_, nullptr, nullptr)] { serve(socket); });
    });
}

ScriptedUpstream::~ScriptedUpstream() {
    ending_ = true;
    accepting_.join();
    for (auto& thread : threads_)
        thread.join();
    ::close(listening_);
}

std::vector<std::string> ScriptedUpstream::requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
}

std::string ScriptedUpstream::readRequest(int socket) const {
    std::string request;
    std::array<char, 65536> bytes{};
    for (;;) {
        const auto end = request.find("\r\n\r\n");
        if (end != std::string::npos && request.size() >= end + 4 + lengthIn(request.substr(0, end)))
            return request;
        const auto got = ::recv(socket, bytes.data(), bytes.size(), 0);
        if (got <= 0)
            return request;
        request.append(bytes.data(), static_cast<std::size_t>(got));
    }
}

void ScriptedUpstream::serve(int socket) {
    int most = most_;
    const int now = ++now_;
    while (now > most && !most_.compare_exchange_weak(most, now)) {
    }
    const auto request = readRequest(socket);
    {
        const std::lock_guard lock(mutex_);
        requests_.push_back(request);
    }
    const auto answer = script_(request);
    for (std::string_view rest = answer ? std::string_view(*answer) : std::string_view(); !rest.empty();) {
        const auto sent = ::send(socket, rest.data(), rest.size(), MSG_NOSIGNAL);
        if (sent <= 0) {
            ++cutOff_;
            break;
        }
        rest.remove_prefix(static_cast<std::size_t>(sent));
    }
    while (!answer && !ending_)
        if (hungUp(socket)) {
            ++abandoned_;
            break;
        }
    --now_;
    ::shutdown(socket, SHUT_WR);
    ::close(socket);
}

std::string jsonAnswer(int status, const std::string& body, const std::string& type) {
    return "HTTP/1.1 " + std::to_string(status) + " Whatever\r\nContent-Type: " + type +
           "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

} // namespace lorvane::backend::testing
