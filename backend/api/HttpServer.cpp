// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/HttpServer.h"

#include "api/HttpSession.h"
#include "util/Log.h"

#include <boost/asio.hpp>
#include <set>
#include <stdexcept>
#include <thread>

namespace lorvane::backend {

namespace net = boost::asio;
using net::ip::tcp;

namespace {

constexpr auto tupled = net::as_tuple(net::use_awaitable);
// After a failed accept (no file descriptors left, mostly): waiting beats spinning.
constexpr auto acceptPause = std::chrono::milliseconds(100);
// How late a connection may be closed that sends no header.
constexpr auto sweepPause = std::chrono::milliseconds(500);

// One thread with its connections; `sessions` is touched on that thread only.
struct Lane {
    net::io_context context{1};
    std::optional<net::executor_work_guard<net::io_context::executor_type>> guard;
    std::set<HttpSession*> sessions;
    std::thread thread;
    net::steady_timer sweep{context};
};

void keepSweeping(Lane& lane) {
    lane.sweep.expires_after(sweepPause);
    lane.sweep.async_wait([&lane](boost::system::error_code error) {
        if (error || !lane.guard)
            return;
        for (auto* session : lane.sessions)
            session->closeOverdue(std::chrono::steady_clock::now());
        keepSweeping(lane);
    });
}

net::awaitable<void> keepSession(std::shared_ptr<HttpSession> session, Lane& lane) {
    struct Kept { // until the end, whatever is thrown
        Lane& lane;
        HttpSession* session;
        ~Kept() { lane.sessions.erase(session); }
    } const kept{lane, session.get()};
    lane.sessions.insert(session.get());
    co_await session->run();
}

} // namespace

class HttpServer::Implementation {
 public:
    Implementation(const ServerOptions& options, std::vector<Route> routes, Authentication authentication,
                   const Pools& pools, OnServed onServed)
        : shared_(std::make_shared<ServerShared>(options, RouteTable(std::move(routes)),
                                                 std::move(authentication), pools, std::move(onServed),
                                                 std::make_shared<ByteBudget>(options.heldBytes))) {
        for (std::size_t i = 0; i < std::max<std::size_t>(1, options.threads); ++i) {
            lanes_.push_back(std::make_unique<Lane>());
            lanes_.back()->guard.emplace(lanes_.back()->context.get_executor());
        }
        acceptor_.emplace(lanes_[0]->context);
        listen(options);
    }

    void start() {
        net::co_spawn(lanes_[0]->context, accept(), net::detached);
        for (auto& lane : lanes_) {
            keepSweeping(*lane);
            lane->thread = std::thread([&context = lane->context] { context.run(); });
        }
    }

    void stop(std::chrono::milliseconds grace) {
        if (stopped_)
            return;
        stopped_ = true;
        announceEnd();
        const auto latest = std::chrono::steady_clock::now() + grace;
        // Before the count is looked at: who is in the queue counts.
        if (lanes_[0]->thread.joinable()) {
            net::post(lanes_[0]->context, net::use_future([this] { stopAccepting(); })).get();
            // And who had been accepted already, of which the handler comes only now.
            net::post(lanes_[0]->context, net::use_future([] {})).get();
        }
        closeSessions(false);
        shared_->connections.waitForNone(latest);
        closeSessions(true);
        for (auto& lane : lanes_)
            net::post(lane->context, [lane = lane.get()] {
                lane->sweep.cancel();
                lane->guard.reset();
            });
        for (auto& lane : lanes_)
            if (lane->thread.joinable())
                lane->thread.join();
    }

    void announceEnd() { shared_->ending = true; }
    std::uint16_t port() const { return port_; }
    std::size_t connections() const { return shared_->connections.count(); }

 private:
    void listen(const ServerOptions& options) try {
        if (options.inherited >= 0)
            return takeOver(options.inherited);
        const tcp::endpoint endpoint(net::ip::make_address(options.address), options.port);
        acceptor_->open(endpoint.protocol());
        acceptor_->set_option(net::socket_base::reuse_address(true));
        acceptor_->bind(endpoint);
        acceptor_->listen();
        port_ = acceptor_->local_endpoint().port();
    } catch (const boost::system::system_error& error) {
        throw std::runtime_error("cannot listen on " + options.address + ':' + std::to_string(options.port) +
                                 ": " + error.code().message());
    }

    void takeOver(int socket) {
        sockaddr_storage address{};
        socklen_t size = sizeof address;
        if (::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0 ||
            (address.ss_family != AF_INET && address.ss_family != AF_INET6))
            throw std::runtime_error("the socket that was handed over is none of TCP");
        acceptor_->assign(address.ss_family == AF_INET ? tcp::v4() : tcp::v6(), socket);
        port_ = acceptor_->local_endpoint().port();
    }

    net::awaitable<void> accept() {
        std::size_t next = 0;
        while (acceptor_->is_open()) {
            Lane& lane = *lanes_[next++ % lanes_.size()];
            auto [error, socket] = co_await acceptor_->async_accept(lane.context, tupled);
            if (error == net::error::operation_aborted)
                break;
            if (error) {
                logLine("accept failed: " + error.message());
                net::steady_timer pause(lanes_[0]->context, acceptPause);
                [[maybe_unused]] const auto [waited] = co_await pause.async_wait(tupled);
                continue;
            }
            take(std::move(socket), lane);
        }
    }

    void take(tcp::socket socket, Lane& lane) {
        if (shared_->connections.count() >= shared_->options.connections)
            return; // the socket closes here: there is no room even for an answer
        auto session = std::make_shared<HttpSession>(std::move(socket), shared_);
        net::co_spawn(lane.context, keepSession(std::move(session), lane), net::detached);
    }

    // Who is in the queue of a socket of our own would be cut off with it; a socket that was handed over
    // keeps its queue for the next who serves it.
    void stopAccepting() {
        boost::system::error_code error;
        acceptor_->non_blocking(true, error);
        while (shared_->options.inherited < 0 && !error) {
            tcp::socket socket(lanes_[0]->context);
            acceptor_->accept(socket, error);
            if (!error)
                take(std::move(socket), *lanes_[0]);
        }
        acceptor_->close(error);
    }

    void closeSessions(bool everything) {
        for (auto& lane : lanes_)
            net::post(lane->context, [&sessions = lane->sessions, everything] {
                for (auto* session : sessions)
                    session->close(everything);
            });
    }

    const std::shared_ptr<ServerShared> shared_;
    std::vector<std::unique_ptr<Lane>> lanes_;
    std::optional<tcp::acceptor> acceptor_;
    std::uint16_t port_ = 0;
    bool stopped_ = false;
};

HttpServer::HttpServer(const ServerOptions& options, std::vector<Route> routes, Authentication authentication,
                       const Pools& pools, OnServed onServed)
    : implementation_(std::make_unique<Implementation>(options, std::move(routes), std::move(authentication),
                                                       pools, std::move(onServed))) {}

HttpServer::~HttpServer() { stop(std::chrono::milliseconds(0)); }

std::uint16_t HttpServer::port() const { return implementation_->port(); }
void HttpServer::start() { implementation_->start(); }
void HttpServer::announceEnd() { implementation_->announceEnd(); }
void HttpServer::stop(std::chrono::milliseconds grace) { implementation_->stop(grace); }
std::size_t HttpServer::connections() const { return implementation_->connections(); }

} // namespace lorvane::backend
