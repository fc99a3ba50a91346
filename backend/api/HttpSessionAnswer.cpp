// SPDX-License-Identifier: GPL-3.0-or-later
// The answering side of a connection: what goes out, and the watch on the client meanwhile.
#include "api/HttpSession.h"
#include "api/Wire.h"
#include "util/Log.h"

#include <boost/asio.hpp>
#include <poll.h>

namespace lorvane::backend {

namespace net = boost::asio;
using boost::system::error_code;

namespace {

constexpr auto pipelinedPoll = std::chrono::milliseconds(50);
constexpr auto tupled = net::as_tuple(net::use_awaitable);

// The connection's end, seen without taking anything of what it has sent.
bool hungUp(int socket) {
    pollfd entry{socket, POLLRDHUP, 0};
    return ::poll(&entry, 1, 0) > 0 && (entry.revents & (POLLRDHUP | POLLHUP | POLLERR)) != 0;
}

} // namespace

// Once the end has been announced every answer is the last of its connection.
HttpWriter::Form HttpSession::form(bool keepAlive) {
    keepAlive_ = keepAlive && !shared_->ending;
    return {version_, keepAlive_, allow_, headOnly_};
}

// Passes on what the worker says, each line awaited: a client that does not read stops the worker, and is
// given up when one write takes too long.
net::awaitable<void> HttpSession::answer(std::shared_ptr<PendingExchange> pending, Answer& answer) {
    const ArmedSlot armed(pending->slot(), waker());
    bool started = false;
    for (;;) {
        if (started)
            timer_.expires_after(shared_->options.silence);
        else
            timer_.expires_at(std::chrono::steady_clock::time_point::max());
        auto progress = pending->takeProgress();
        // Only straight after looking: what comes during a write would wake nobody.
        if (progress.empty() && progress.started == started) {
            if (gone_ || closed_)
                co_return;
            const bool woken = co_await wait();
            if (woken)
                continue;
            progress.lines = pingLine() + '\n';
        }
        if (progress.response && !started) {
            answer.status = progress.response->status;
            answer.whole = co_await writer_.response(std::move(*progress.response), form(keepAlive_));
            co_return;
        }
        if (progress.started && !started) {
            started = true;
            answer.status = 200;
            // Under HTTP/1.0 nothing but the connection's end can tell the body's.
            const bool written = co_await writer_.streamHead(form(keepAlive_ && version_ >= 11));
            answer.whole = written && headOnly_;
            if (!written || headOnly_)
                co_return;
        }
        if (!progress.lines.empty()) {
            const bool written = co_await writer_.lines(std::move(progress.lines), version_);
            if (!written)
                co_return;
        }
        if (progress.ended) {
            answer.whole = started;
            if (started && version_ >= 11)
                answer.whole = co_await writer_.lastChunk();
            co_return;
        }
    }
}

// Beside the answering, until the client has closed or half-closed the connection: then whatever the
// answering waits for is over. A call that comes too late finds another number.
void HttpSession::watch(unsigned number) {
    stream_.socket().async_wait(net::ip::tcp::socket::wait_read,
                                [self = shared_from_this(), number](error_code error) {
                                    if (!error && number == self->watched_)
                                        self->lookAround(number);
                                });
}

void HttpSession::lookAround(unsigned number) {
    if (stream_.socket().is_open() && !hungUp(stream_.socket().native_handle())) {
        // The next request has come already, and the socket stays readable: only look from time to time.
        poll_.emplace(stream_.get_executor(), pipelinedPoll);
        poll_->async_wait([self = shared_from_this(), number](error_code error) {
            if (!error && number == self->watched_)
                self->lookAround(number);
        });
        return;
    }
    gone_ = true;
    timer_.cancel();
    stream_.cancel();
}

void HttpSession::endWatch() {
    ++watched_;
    poll_.reset();
    error_code ignored;
    stream_.socket().cancel(ignored);
}

// A refusal before the body was read ends the connection, and what still comes in is thrown away for a while:
// closing at once would reset the connection, and the client would lose the answer.
net::awaitable<bool> HttpSession::refuse(int status, std::string_view code, bool bodyUnread) {
    Response response{status, errorBody(code)};
    response.retryAfter = status == 503 ? busyPause : 0;
    const bool written = co_await writer_.response(std::move(response), form(keepAlive_ && !bodyUnread));
    log(what_, written ? status : 0, std::string(code));
    if (written && bodyUnread)
        co_await writer_.linger();
    co_return written&& keepAlive_;
}

net::awaitable<bool> HttpSession::answerInstantly(Response response) {
    const int status = response.status;
    const bool written = co_await writer_.response(std::move(response), form(keepAlive_));
    log(what_, written ? status : 0, {});
    co_return written&& keepAlive_;
}

net::awaitable<bool> HttpSession::wait() {
    const auto [cancelled] = co_await timer_.async_wait(tupled);
    co_return bool(cancelled);
}

std::function<void()> HttpSession::waker() {
    return [executor = stream_.get_executor(), weak = weak_from_this()] {
        net::post(executor, [weak] {
            if (const auto self = weak.lock())
                self->timer_.cancel();
        });
    };
}

void HttpSession::log(std::string_view what, int status, const std::string& notes) {
    const auto took =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - began_);
    std::string line(what);
    line += status == 0 ? " gone" : ' ' + std::to_string(status);
    line += " took=" + std::to_string(took.count()) + "ms";
    if (!notes.empty())
        line += " (" + notes + ')';
    logLine(line);
    if (shared_->onServed)
        shared_->onServed(what, status, took);
}

} // namespace lorvane::backend
