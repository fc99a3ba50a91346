// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/HttpSession.h"

#include "api/HttpText.h"
#include "api/RequestHead.h"
#include "api/TokenCall.h"
#include "api/Wire.h"
#include "util/Log.h"
#include "util/WorkPool.h"

#include <algorithm>
#include <boost/asio.hpp>
#include <boost/beast/http.hpp>
#include <poll.h>
#include <sys/socket.h>

namespace lorvane::backend {

namespace net = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
using boost::system::error_code;

namespace {

constexpr std::size_t longestHeader = 16 * 1024;
constexpr std::size_t readStep = 16 * 1024;
// How long a server that ends waits for a request on a connection that has none.
constexpr auto firstRequestTime = std::chrono::milliseconds(1000);
constexpr auto nextRequestTime = std::chrono::milliseconds(50);
constexpr auto tupled = net::as_tuple(net::use_awaitable);

WorkPool& poolOf(const Pools& pools, Work work) {
    switch (work) {
    case Work::take:
        return pools.takes;
    case Work::slow:
        return pools.slow;
    case Work::quick:
        break;
    }
    return pools.quick;
}

std::string_view plain(beast::string_view text) { return {text.data(), text.size()}; }

// A header of several lines is one list (RFC 9110 5.3).
template <class Head>
std::string listIn(const Head& head, std::string_view name) {
    std::string list;
    for (auto [line, end] = head.equal_range(beast::string_view(name.data(), name.size())); line != end;
         ++line)
        list.append(list.empty() ? "" : ",").append(plain(line->value()));
    return list;
}

// Who stands between us and a client may read such a request otherwise than we do: one host, one token, and a
// body that is told by one length or in chunks (RFC 9112 3.2, 6.1 and 6.3).
template <class Parser>
bool unambiguous(const Parser& parser) {
    const auto& head = parser.get();
    const auto hosts = head.count(http::field::host);
    if (head.version() >= 11 ? hosts != 1 : hosts > 1)
        return false;
    if (head.count(http::field::authorization) > 1)
        return false;
    const auto lengths = head.count(http::field::content_length);
    const auto coding = head.find(http::field::transfer_encoding);
    if (lengths > 1 || (lengths > 0 && coding != head.end()) ||
        head[http::field::content_length].find(',') != beast::string_view::npos)
        return false;
    return coding == head.end() || (head.version() >= 11 && beast::iequals(coding->value(), "chunked") &&
                                    head.count(http::field::transfer_encoding) == 1);
}

} // namespace

HttpSession::HttpSession(net::ip::tcp::socket socket, std::shared_ptr<ServerShared> shared)
    : stream_(std::move(socket)), writer_(stream_, shared->options.writeTime), timer_(stream_.get_executor()),
      shared_(std::move(shared)) {
    shared_->connections.add();
}

HttpSession::~HttpSession() { shared_->connections.remove(); }

net::awaitable<void> HttpSession::run() {
    error_code ignored;
    stream_.socket().set_option(net::ip::tcp::no_delay(true), ignored);
    stream_.socket().non_blocking(true, ignored);
    bool more = true;
    while (more && !closed_) {
        more = co_await serveOne();
        more = more && keepAlive_ && !shared_->ending;
    }
    timer_.cancel();
    stream_.socket().shutdown(net::ip::tcp::socket::shutdown_both, ignored);
    stream_.close();
}

void HttpSession::close(bool everything) {
    if (!everything)
        return closeWhenSilent();
    closed_ = true;
    timer_.cancel();
    stream_.close();
}

void HttpSession::closeOverdue(std::chrono::steady_clock::time_point now) {
    if (now >= headDue_)
        close(true);
}

// A request may be on its way already, above all the first one of a connection that was just made. Once it is
// here the timer serves it.
void HttpSession::closeWhenSilent() {
    if (requestUnderWay())
        return;
    timer_.expires_after(what_.empty() ? firstRequestTime : nextRequestTime);
    timer_.async_wait([self = shared_from_this()](error_code error) {
        if (!error && !self->requestUnderWay())
            self->close(true);
    });
}

// Also one that lies in the socket, or has come in part.
bool HttpSession::requestUnderWay() {
    pollfd entry{stream_.socket().native_handle(), POLLIN, 0};
    return !idle_ || buffer_.size() > 0 || ::poll(&entry, 1, 0) > 0;
}

// Reads one request and answers it. False when the connection is to be closed.
net::awaitable<bool> HttpSession::serveOne() {
    Parser parser;
    parser.header_limit(longestHeader);
    parser.body_limit(boost::none);
    idle_ = buffer_.size() == 0;
    headDue_ = std::chrono::steady_clock::now() +
               (what_.empty() ? shared_->options.headerTime : shared_->options.idleTime);
    const auto [error, size] = co_await http::async_read_header(stream_, buffer_, parser, tupled);
    idle_ = false;
    headDue_ = std::chrono::steady_clock::time_point::max();
    began_ = std::chrono::steady_clock::now();
    what_ = "unreadable";
    version_ = 11;
    keepAlive_ = false;
    headOnly_ = parser.get().method() == http::verb::head;
    if (error) {
        const bool more = co_await refuseHeader(error);
        co_return more;
    }
    const auto& head = parser.get();
    version_ = head.version();
    if (!unambiguous(parser)) {
        const bool more = co_await refuse(400, codeOfStatus(400), true);
        co_return more;
    }
    keepAlive_ = head.keep_alive();
    auto found = shared_->routes.find(plain(head.method_string()), plain(head.target()));
    what_ = std::move(found.what);
    allow_ = found.allow;
    if (!found.route) {
        const bool more = co_await refuse(found.status, codeOfStatus(found.status), !parser.is_done());
        co_return more;
    }
    const bool more = co_await serveRoute(parser, *found.route);
    co_return more;
}

net::awaitable<bool> HttpSession::refuseHeader(error_code error) {
    const auto protocol = http::make_error_code(http::error::end_of_stream);
    if (error == http::error::end_of_stream || error == http::error::partial_message ||
        error.category() != protocol.category())
        co_return false;
    const bool tooLong = error == http::error::header_limit || error == http::error::buffer_overflow;
    const int status = tooLong ? 431 : 400;
    const bool more = co_await refuse(status, codeOfStatus(status), true);
    co_return more;
}

Request HttpSession::requestOf(const Parser::value_type& head, Access access) const {
    RequestHead texts{plain(head.target()),
                      plain(head[http::field::content_type]),
                      plain(head["X-Tirra-Take"]),
                      plain(head["X-Tirra-Platform"]),
                      {},
                      {}};
    std::string peer;
    std::string forwarded;
    if (access == Access::open) {
        error_code gone;
        peer = stream_.socket().remote_endpoint(gone).address().to_string();
        forwarded = listIn(head, "X-Forwarded-For");
        texts.peer = peer;
        texts.forwarded = forwarded;
    }
    return backend::requestOf(texts, shared_->options.proxies);
}

net::awaitable<bool> HttpSession::serveRoute(Parser& parser, const Route& route) {
    const auto& head = parser.get();
    if (parser.content_length().value_or(0) > route.bodyLimit) {
        const bool more = co_await refuse(413, codeOfStatus(413), true);
        co_return more;
    }
    auto request = requestOf(head, route.access);
    if (route.access == Access::token) {
        auto given = bearerToken(plain(head[http::field::authorization]));
        int refused = 0;
        if (!recallToken(given, request.device))
            refused = co_await checkToken(std::move(given), request.device);
        if (refused != 0) {
            const bool more = co_await refuse(refused, codeOfStatus(refused), !parser.is_done());
            co_return more;
        }
    }
    if (route.instant && parser.is_done())
        if (auto response = route.instant(request)) {
            const bool more = co_await answerInstantly(std::move(*response));
            co_return more;
        }
    ByteBudget::Share held(shared_->bodies);
    const int refused = co_await readBody(parser, route.bodyLimit, request.body, held);
    if (refused < 0)
        co_return false;
    if (refused > 0) {
        const bool more = co_await refuse(refused, codeOfStatus(refused), true);
        co_return more;
    }
    if (route.work == Work::take) {
        // A take is answered for seconds: what its head took is worth more to others.
        parser.get().clear();
        buffer_.shrink_to_fit();
    }
    auto pending =
        std::make_shared<PendingExchange>(std::move(request), std::move(held), shared_->options.backlog);
    auto& pool = poolOf(shared_->pools, route.work);
    const bool queued =
        pool.submit([pending, &route, &pool, keep = shared_] { pending->handle(route.handler, pool); });
    if (!queued) {
        const bool more = co_await refuse(503, codeOfStatus(503), false);
        co_return more;
    }
    gone_ = false;
    watch(++watched_);
    Answer outcome;
    co_await answer(pending, outcome);
    endWatch();
    pending->abandon();
    log(what_, outcome.whole ? outcome.status : 0, pending->notes());
    const bool more = outcome.whole && keepAlive_;
    co_return more;
}

// 0 when the body is there, a status to refuse with, or -1 when the connection is gone.
net::awaitable<int> HttpSession::readBody(Parser& parser, std::size_t limit, std::string& body,
                                          ByteBudget::Share& held) {
    if (!parser.is_done() && lowerCase(plain(parser.get()[http::field::expect])) == "100-continue") {
        const bool written = co_await writer_.goOn();
        if (!written)
            co_return -1;
    }
    std::vector<char> step(parser.is_done() ? 0 : readStep);
    const auto latest = std::chrono::steady_clock::now() + shared_->options.bodyTime;
    while (!parser.is_done()) {
        parser.get().body().data = step.data();
        parser.get().body().size = step.size();
        stream_.expires_at(std::min(std::chrono::steady_clock::now() + shared_->options.bodyPause, latest));
        auto [error, size] = co_await http::async_read_some(stream_, buffer_, parser, tupled);
        stream_.expires_never();
        if (error && error != http::error::need_buffer) {
            const bool malformed =
                error.category() == http::make_error_code(http::error::bad_chunk).category() &&
                error != http::error::end_of_stream && error != http::error::partial_message;
            if (!malformed)
                log(what_, 0,
                    error == beast::error::timeout ? "body came too slowly" : "gone within the body");
            co_return malformed ? 400 : -1;
        }
        const auto count = step.size() - parser.get().body().size;
        if (body.size() + count > limit)
            co_return 413;
        if (!held.grow(count))
            co_return 503;
        body.append(step.data(), count);
    }
    co_return 0;
}

bool HttpSession::recallToken(const std::string& token, DeviceId& device) const {
    const auto& recall = shared_->authentication.recall;
    const auto known = recall && !token.empty() ? recall(token) : std::nullopt;
    device = known.value_or(device);
    return known.has_value();
}

// 0 for a known token, else the status to refuse with.
net::awaitable<int> HttpSession::checkToken(std::string token, DeviceId& device) {
    if (token.empty())
        co_return 401;
    const auto call = std::make_shared<TokenCall>();
    const ArmedSlot armed(call->slot(), waker());
    const bool queued = shared_->pools.quick.submit(
        [call, token = std::move(token), keep = shared_] { call->run(keep->authentication.lookUp, token); });
    if (!queued)
        co_return 503;
    for (;;) {
        timer_.expires_at(std::chrono::steady_clock::time_point::max());
        const auto answer = call->answer(device);
        if (answer == TokenCall::Answer::known)
            co_return 0;
        if (answer != TokenCall::Answer::none || closed_)
            co_return answer == TokenCall::Answer::unknown ? 401 : 503;
        [[maybe_unused]] const bool woken = co_await wait();
    }
}

} // namespace lorvane::backend
