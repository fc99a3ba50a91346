// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace lorvane::backend::testing {

// A server that answers each request with the very bytes the test gives it, right or wrong, and then closes.
class ScriptedUpstream {
 public:
    // What goes back for a whole request (head and body); nothing: no answer, until the client leaves.
    using Script = std::function<std::optional<std::string>(const std::string& request)>;
    explicit ScriptedUpstream(Script script);
    ~ScriptedUpstream();
    ScriptedUpstream(const ScriptedUpstream&) = delete;
    ScriptedUpstream& operator=(const ScriptedUpstream&) = delete;

    std::string url() const { return "http://127.0.0.1:" + std::to_string(port_); }
    std::vector<std::string> requests() const;
    int most() const { return most_; }           // connections at the same time
    int abandoned() const { return abandoned_; } // by clients that left without an answer
    int cutOff() const { return cutOff_; }       // by clients that did not take all of it

 private:
    void serve(int socket);
    std::string readRequest(int socket) const;

    const Script script_;
    int listening_ = -1;
    std::uint16_t port_ = 0;
    std::atomic<bool> ending_ = false;
    std::atomic<int> now_ = 0;
    std::atomic<int> most_ = 0;
    std::atomic<int> abandoned_ = 0;
    std::atomic<int> cutOff_ = 0;
    mutable std::mutex mutex_;
    std::vector<std::string> requests_;
    std::vector<std::thread> threads_;
    std::thread accepting_;
};

// An answer with a JSON body; its length is told.
std::string jsonAnswer(int status, const std::string& body, const std::string& type = "application/json");

} // namespace lorvane::backend::testing
