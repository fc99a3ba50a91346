// SPDX-License-Identifier: GPL-3.0-or-later
// Seen by the files of the server alone: they know the HTTP library.
#pragma once

#include "api/Http.h"

#include <boost/asio/awaitable.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <string>

namespace lorvane::backend {

// What goes out on one connection, whose socket does not block. Each operation is done when the socket has
// taken all of it, and false when that took longer than the write time or the client is gone.
class HttpWriter {
 public:
    struct Form {
        unsigned version = 11; // of HTTP, times ten
        bool keepAlive = false;
        std::string_view allow; // the methods there are, for 405
        bool headOnly = false;  // no body follows, whatever the head says of one
    };

    HttpWriter(boost::beast::tcp_stream& stream, std::chrono::milliseconds writeTime)
        : stream_(stream), writeTime_(writeTime) {}

    boost::asio::awaitable<bool> response(Response response, Form form);
    // An answer of lines; its end is told by lastChunk(), or under HTTP/1.0 by the connection's.
    boost::asio::awaitable<bool> streamHead(Form form);
    boost::asio::awaitable<bool> lines(std::string lines, unsigned version);
    boost::asio::awaitable<bool> lastChunk();
    boost::asio::awaitable<bool> goOn(); // to a client that asks before it sends a body
    // Closes our side, and throws away what still comes for a while.
    boost::asio::awaitable<void> linger();

 private:
    boost::asio::awaitable<bool> write(std::string text, std::size_t from = 0);

    boost::beast::tcp_stream& stream_;
    const std::chrono::milliseconds writeTime_;
};

} // namespace lorvane::backend
