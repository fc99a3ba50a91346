// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "language/ChatServers.h"
#include "language/ChatStream.h"
#include "net/ServerPool.h"

#include <chrono>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace lorvane::backend {

// What is asked of a model: what it is to do, and what it is to do it with.
struct ChatRequest {
    std::string system;
    std::string user;
    std::size_t mostTokens = 1024;
};

struct ChatTimes {
    std::chrono::milliseconds connect = std::chrono::seconds(5);
    std::chrono::milliseconds answer = std::chrono::seconds(20);  // to the first byte
    std::chrono::milliseconds silence = std::chrono::seconds(15); // between two pieces
    std::chrono::milliseconds whole = std::chrono::seconds(60);   // of one server's answer
};

// Hears an answer as it comes.
class ChatListener {
 public:
    virtual ~ChatListener() = default;
    virtual void begin() = 0; // of a server's answer; what another one said before is void
    virtual bool hear(std::string_view text) = 0; // false: no more is wanted
    // Something has been passed on that cannot be taken back, so that no other server may be asked.
    virtual bool committed() const { return false; }
};

struct ChatOutcome {
    enum class End { complete, truncated, refused, failed, unwanted, stopped };
    End end = End::failed;
    std::string reason; // unless complete; holds nothing that was sent or received
};

// Chat completions by servers in order of preference, see ServerPool. Any thread, several calls at once; a
// call blocks until its end, and ends at once when it is asked to stop.
class ChatClient {
 public:
    ChatClient(std::vector<ChatServer> servers, PoolTimes pool);

    ChatOutcome complete(const ChatRequest& request, const ChatTimes& times, ChatListener& listener,
                         const std::stop_token& stop);
    ServerFigures figures() const { return pool_.figures(); }

 private:
    Attempt ask(const ChatServer& server, const ChatRequest& request, const ChatTimes& times,
                ChatListener& listener, ChatOutcome& outcome, const std::stop_token& stop) const;

    const std::vector<ChatServer> servers_;
    ServerPool pool_;
};

} // namespace lorvane::backend
