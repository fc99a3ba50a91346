// SPDX-License-Identifier: GPL-3.0-or-later
#include "testing/ScriptedSpeechSockets.h"

#include <arpa/inet.h>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/websocket.hpp>
#include <boost/json.hpp>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace lorvane::backend::testing {

namespace json = boost::json;

namespace {

class Reader {
 public:
    explicit Reader(int socket) : socket_(socket) {}
    std::string line() {
        while (have_.find('\n') == std::string::npos)
            more();
        return take(have_.find('\n') + 1);
    }
    std::string bytes(std::size_t count) {
        while (have_.size() < count)
            more();
        return take(count);
    }

 private:
    void more() {
        char buffer[16'384];
        const auto got = ::recv(socket_, buffer, sizeof buffer, 0);
        if (got <= 0)
            throw std::runtime_error("the client left");
        have_.append(buffer, static_cast<std::size_t>(got));
    }
    std::string take(std::size_t count) {
        auto out = have_.substr(0, count);
        have_.erase(0, count);
        return out;
    }
    int socket_;
    std::string have_;
};

} // namespace

SocketServer::SocketServer(Serve serve) : serve_(std::move(serve)) {
    listening_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (listening_ < 0 || ::bind(listening_, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        ::listen(listening_, 16) != 0 ||
        ::getsockname(listening_, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        throw std::runtime_error("no socket to listen on");
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] {
        while (!ending_) {
            const int socket = ::accept(listening_, nullptr, nullptr);
            if (socket < 0)
                continue;
            serving_ = socket;
            try {
                if (!ending_)
                    serve_(socket);
            } catch (const std::exception&) { // the client's side tells what came of it
            }
            serving_ = -1;
            ::close(socket);
        }
    });
}

SocketServer::~SocketServer() {
    ending_ = true;
    ::shutdown(listening_, SHUT_RDWR);
    if (const int socket = serving_; socket >= 0)
        ::shutdown(socket, SHUT_RDWR);
    thread_.join();
    ::close(listening_);
}

std::string wyomingEvent(const std::string& type, const std::string& data) {
    return R"({"type":")" + type + R"(","data":)" + data + "}\n";
}

ScriptedWyoming::ScriptedWyoming(std::optional<std::string> answer)
    : answer_(std::move(answer)), server_([this](int socket) { serve(socket); }) {}

void ScriptedWyoming::serve(int socket) {
    Reader reader(socket);
    Request request;
    while (request.types.empty() || request.types.back() != "audio-stop") {
        const auto event = json::parse(reader.line()).as_object();
        const std::string type(event.at("type").as_string());
        request.types.push_back(type);
        if (type == "transcribe")
            request.wish = json::serialize(event.at("data"));
        if (type == "audio-start")
            request.format = json::serialize(event.at("data"));
        if (const auto* length = event.if_contains("payload_length"))
            request.sound += reader.bytes(length->to_number<std::size_t>());
    }
    {
        const std::lock_guard lock(mutex_);
        requests_.push_back(std::move(request));
    }
    changed_.notify_all();
    if (answer_) {
        ::send(socket, answer_->data(), answer_->size(), MSG_NOSIGNAL);
        return;
    }
    char nothing = 0;
    const bool left = ::recv(socket, &nothing, 1, 0) <= 0;
    const std::lock_guard lock(mutex_);
    left_ = left;
    changed_.notify_all();
}

std::vector<ScriptedWyoming::Request> ScriptedWyoming::requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
}

void ScriptedWyoming::awaitRequest() const {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, std::chrono::seconds(10), [this] { return !requests_.empty(); });
}

bool ScriptedWyoming::wasLeft() const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(10), [this] { return left_; });
}

ScriptedVosk::ScriptedVosk(std::vector<std::string> answers)
    : answers_(std::move(answers)), server_([this](int socket) { serve(socket); }) {}

void ScriptedVosk::serve(int socket) {
    namespace asio = boost::asio;
    asio::io_context context;
    boost::beast::websocket::stream<asio::ip::tcp::socket> stream(
        asio::ip::tcp::socket(context, asio::ip::tcp::v4(), ::dup(socket)));
    stream.accept();
    Request request;
    const auto keep = [&] {
        const std::lock_guard lock(mutex_);
        requests_.push_back(request);
    };
    auto answer = answers_.begin();
    bool ended = false;
    while (!ended) {
        boost::beast::flat_buffer buffer;
        stream.read(buffer);
        const auto message = boost::beast::buffers_to_string(buffer.data());
        if (stream.got_text())
            request.texts.push_back(message);
        else
            request.sound += message;
        ended = stream.got_text() && request.texts.size() == 2;
        if (stream.got_text() && !ended)
            continue; // the configuration has no answer
        if (ended)
            keep();
        if (answer == answers_.end())
            return;
        stream.text(true);
        stream.write(asio::buffer(*answer++));
    }
}

std::vector<ScriptedVosk::Request> ScriptedVosk::requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
}

} // namespace lorvane::backend::testing
