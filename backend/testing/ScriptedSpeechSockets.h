// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace lorvane::backend::testing {

// Accepts one connection after the other on a free port of the loopback address, in a thread of its own.
class SocketServer {
 public:
    using Serve = std::function<void(int socket)>; // the socket is closed behind it; may throw
    explicit SocketServer(Serve serve);
    ~SocketServer();
    std::uint16_t port() const { return port_; }

 private:
    const Serve serve_;
    int listening_ = -1;
    std::uint16_t port_ = 0;
    std::atomic<int> serving_ = -1;
    std::atomic<bool> ending_ = false;
    std::thread thread_;
};

std::string wyomingEvent(const std::string& type, const std::string& data);

// A Wyoming server that gives the same bytes for every take; with nothing it stays silent.
class ScriptedWyoming {
 public:
    struct Request {
        std::vector<std::string> types;
        std::string wish;   // data of "transcribe"
        std::string format; // data of "audio-start"
        std::string sound;
    };
    explicit ScriptedWyoming(std::optional<std::string> answer);
    std::uint16_t port() const { return server_.port(); }
    std::vector<Request> requests() const;
    void awaitRequest() const; // a whole one
    bool wasLeft() const;      // by a client that had no answer; waits for it up to 10 s

 private:
    void serve(int socket);

    const std::optional<std::string> answer_;
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::vector<Request> requests_;
    bool left_ = false;
    SocketServer server_;
};

// A Vosk server that answers each piece of sound, and the end, with the next of its answers; after the last
// one it closes.
class ScriptedVosk {
 public:
    struct Request {
        std::vector<std::string> texts;
        std::string sound;
    };
    explicit ScriptedVosk(std::vector<std::string> answers);
    std::uint16_t port() const { return server_.port(); }
    std::vector<Request> requests() const;

 private:
    void serve(int socket);

    const std::vector<std::string> answers_;
    mutable std::mutex mutex_;
    std::vector<Request> requests_;
    SocketServer server_;
};

} // namespace lorvane::backend::testing
