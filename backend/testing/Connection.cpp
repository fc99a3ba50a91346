// SPDX-License-Identifier: GPL-3.0-or-later
#include "testing/Connection.h"

#include <arpa/inet.h>
#include <array>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace lorvane::backend::testing {

Connection::Connection(std::uint16_t port, int receiveBuffer)
    : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    // Before the connection is made, or it is not honoured.
    if (receiveBuffer > 0)
        ::setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        close();
        throw std::runtime_error("cannot connect to port " + std::to_string(port));
    }
    setPatience(patience);
}

void Connection::setPatience(std::chrono::milliseconds time) {
    const timeval limit{time.count() / 1000, time.count() % 1000 * 1000};
    ::setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    ::setsockopt(socket_, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

Connection::Connection(Connection&& other) noexcept
    : socket_(std::exchange(other.socket_, -1)), buffer_(std::move(other.buffer_)),
      body_(std::move(other.body_)), bodyEnded_(other.bodyEnded_) {}

Connection::~Connection() { close(); }

void Connection::close() {
    if (socket_ >= 0)
        ::close(std::exchange(socket_, -1));
}

void Connection::reset() {
    const linger hard{1, 0};
    ::setsockopt(socket_, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
    close();
}

void Connection::shutdownSend() { ::shutdown(socket_, SHUT_WR); }

bool Connection::send(std::string_view bytes) {
    while (!bytes.empty()) {
        const auto sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

bool Connection::fill() {
    std::array<char, 65536> bytes{};
    const auto got = ::recv(socket_, bytes.data(), bytes.size(), 0);
    if (got <= 0)
        return false;
    buffer_.append(bytes.data(), static_cast<std::size_t>(got));
    return true;
}

std::optional<std::string> Connection::takeLine() {
    std::size_t end = 0;
    while ((end = buffer_.find("\r\n")) == std::string::npos)
        if (!fill())
            return std::nullopt;
    auto line = buffer_.substr(0, end);
    buffer_.erase(0, end + 2);
    return line;
}

Reply Connection::readHead() {
    Reply reply;
    body_.clear();
    bodyEnded_ = false;
    const auto first = takeLine();
    if (!first || first->size() < 12)
        return reply;
    const int status = std::atoi(first->c_str() + 9);
    for (;;) {
        const auto line = takeLine();
        if (!line)
            return reply;
        if (line->empty())
            break;
        const auto colon = line->find(": ");
        auto name = line->substr(0, colon);
        for (char& c : name)
            c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        reply.headers[name] = line->substr(colon + 2);
    }
    reply.status = status;
    return reply;
}

bool Connection::readChunk() {
    const auto head = takeLine();
    if (!head)
        return false;
    const auto size = std::stoul(*head, nullptr, 16);
    while (buffer_.size() < size + 2)
        if (!fill())
            return false;
    body_.append(buffer_, 0, size);
    buffer_.erase(0, size + 2);
    bodyEnded_ = size == 0;
    return !bodyEnded_;
}

std::optional<std::string> Connection::readLine() {
    std::size_t end = 0;
    while ((end = body_.find('\n')) == std::string::npos)
        if (!readChunk())
            return std::nullopt;
    auto line = body_.substr(0, end);
    body_.erase(0, end + 1);
    return line;
}

Reply Connection::readReply() {
    auto reply = readHead();
    if (reply.status == 0 || reply.status == 100)
        return reply;
    if (reply.headers["transfer-encoding"] == "chunked") {
        while (readChunk()) {
        }
        reply.body = std::exchange(body_, {});
        if (!bodyEnded_)
            reply.status = 0;
        return reply;
    }
    const auto size = std::stoul("0" + reply.headers["content-length"]);
    while (buffer_.size() < size)
        if (!fill())
            return {};
    reply.body = buffer_.substr(0, size);
    buffer_.erase(0, size);
    return reply;
}

std::string Connection::readAll() {
    while (fill()) {
    }
    return std::exchange(buffer_, {});
}

bool Connection::closedWithin(std::chrono::milliseconds time) {
    const auto latest = std::chrono::steady_clock::now() + time;
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(latest - std::chrono::steady_clock::now());
        pollfd entry{socket_, POLLIN, 0};
        if (left.count() <= 0 || ::poll(&entry, 1, static_cast<int>(left.count())) <= 0)
            return false;
        if (!fill())
            return true;
    }
}

bool Connection::readableWithin(std::chrono::milliseconds time) const {
    pollfd entry{socket_, POLLIN, 0};
    return !buffer_.empty() || ::poll(&entry, 1, static_cast<int>(time.count())) > 0;
}

std::string requestText(const Call& call) {
    std::string text = call.method + ' ' + call.path + " HTTP/1.1\r\nHost: localhost\r\n";
    if (!call.token.empty())
        text += "Authorization: Bearer " + call.token + "\r\n";
    if (!call.takeId.empty())
        text += "X-Tirra-Take: " + call.takeId + "\r\n";
    if (call.method == "POST")
        text += "Content-Type: " + call.contentType +
                "\r\nContent-Length: " + std::to_string(call.body.size()) + "\r\n";
    return text + call.extraHeaders + "\r\n" + call.body;
}

Reply request(Connection& connection, const Call& call) {
    connection.send(requestText(call)); // refused half way is fine: the answer tells
    return connection.readReply();
}

Reply request(std::uint16_t port, const Call& call) {
    Connection connection(port);
    return request(connection, call);
}

std::string framedTake(std::string_view fields, std::string_view audio) {
    std::string body;
    for (int shift = 24; shift >= 0; shift -= 8)
        body += static_cast<char>(fields.size() >> shift & 0xffU);
    return body.append(fields).append(audio);
}

} // namespace lorvane::backend::testing
