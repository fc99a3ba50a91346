// SPDX-License-Identifier: GPL-3.0-or-later
// Seen by HttpServer.cpp, HttpSession.cpp and HttpSessionAnswer.cpp only: they know the HTTP library.
#pragma once

#include "api/ConnectionCount.h"
#include "api/HttpServer.h"
#include "api/HttpWriter.h"
#include "api/PendingExchange.h"
#include "api/RouteTable.h"

#include <atomic>
#include <boost/asio/awaitable.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/buffer_body.hpp>
#include <boost/beast/http/parser.hpp>
#include <memory>

namespace lorvane::backend {

// What all connections share, and the work for them that may outlive the server.
struct ServerShared {
    ServerOptions options;
    RouteTable routes;
    Authentication authentication;
    Pools pools;
    OnServed onServed;
    std::shared_ptr<ByteBudget> bodies;
    ConnectionCount connections;
    std::atomic<bool> ending = false; // every connection ends with the answer that it is at
};

// One connection, on the thread of its context.
class HttpSession : public std::enable_shared_from_this<HttpSession> {
 public:
    HttpSession(boost::asio::ip::tcp::socket socket, std::shared_ptr<ServerShared> shared);
    ~HttpSession();

    boost::asio::awaitable<void> run();
    // Closes a connection that has no request under way, or with `everything` any; the running coroutine then
    // ends by itself.
    void close(bool everything);
    // Closes a connection whose next header has been waited for too long. To be called now and then: a timer
    // for each request costs more than all the rest of a short one.
    void closeOverdue(std::chrono::steady_clock::time_point now);

 private:
    using Parser = boost::beast::http::request_parser<boost::beast::http::buffer_body>;
    struct Answer {
        int status = 0; // 0: the client was gone before an answer
        bool whole = false;
    };

    boost::asio::awaitable<bool> serveOne();
    boost::asio::awaitable<bool> refuseHeader(boost::system::error_code error);
    boost::asio::awaitable<bool> serveRoute(Parser& parser, const Route& route);
    Request requestOf(const Parser::value_type& head, Access access) const;
    boost::asio::awaitable<int> readBody(Parser& parser, std::size_t limit, std::string& body,
                                         ByteBudget::Share& held);
    bool recallToken(const std::string& token, DeviceId& device) const;
    boost::asio::awaitable<int> checkToken(std::string token, DeviceId& device);
    boost::asio::awaitable<void> answer(std::shared_ptr<PendingExchange> pending, Answer& answer);
    void watch(unsigned number);
    void lookAround(unsigned number);
    void endWatch();
    boost::asio::awaitable<bool> answerInstantly(Response response);
    boost::asio::awaitable<bool> refuse(int status, std::string_view code, bool bodyUnread);
    boost::asio::awaitable<bool> wait(); // false: the timer ran out, nobody woke it
    std::function<void()> waker();
    HttpWriter::Form form(bool keepAlive);
    bool requestUnderWay();
    void closeWhenSilent();
    void log(std::string_view what, int status, const std::string& notes);

    boost::beast::tcp_stream stream_;
    HttpWriter writer_;
    boost::asio::steady_timer timer_;
    // Of what has come and was not read yet. A chunk's extensions and trailers would fill it without end.
    boost::beast::flat_buffer buffer_{std::size_t(64) << 10};
    const std::shared_ptr<ServerShared> shared_;
    std::chrono::steady_clock::time_point began_;
    std::chrono::steady_clock::time_point headDue_ = std::chrono::steady_clock::time_point::max();
    std::string what_;
    std::string_view allow_;
    unsigned version_ = 11;
    bool headOnly_ = false; // what the request asked for
    bool keepAlive_ = true;
    bool idle_ = true;
    bool closed_ = false;
    bool gone_ = false;
    unsigned watched_ = 0; // changes with every request and its end
    std::optional<boost::asio::steady_timer> poll_;
};

} // namespace lorvane::backend
