// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <boost/asio/awaitable.hpp>
#include <chrono>
#include <functional>
#include <stop_token>
#include <string>

namespace lorvane::backend {

struct SocketCallEnd {
    enum class End { done, failed, late, stopped };
    End end = End::failed;
    std::string reason; // unless done; holds nothing that was sent or received
};

// Runs a conversation over sockets in the calling thread until it returns or throws, until the time is over
// or a stop, whichever is first; what it waits for then is given up. A name is looked up to its end.
SocketCallEnd runSocketCall(const std::function<boost::asio::awaitable<void>()>& conversation,
                            std::chrono::milliseconds time, const std::stop_token& stop);

} // namespace lorvane::backend
