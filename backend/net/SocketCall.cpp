// SPDX-License-Identifier: GPL-3.0-or-later
#include "net/SocketCall.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/system/system_error.hpp>

namespace lorvane::backend {

namespace asio = boost::asio;

SocketCallEnd runSocketCall(const std::function<asio::awaitable<void>()>& conversation,
                            std::chrono::milliseconds time, const std::stop_token& stop) {
    asio::io_context context(1);
    bool ended = false;
    std::exception_ptr failure;
    asio::co_spawn(context, conversation, [&](std::exception_ptr thrown) {
        ended = true;
        failure = std::move(thrown);
    });
    {
        const std::stop_callback stopping(stop, [&] { context.stop(); });
        context.run_for(time);
    }
    if (!ended)
        return stop.stop_requested() ? SocketCallEnd{SocketCallEnd::End::stopped, "stopped"}
                                     : SocketCallEnd{SocketCallEnd::End::late, "took too long"};
    try {
        if (failure)
            std::rethrow_exception(failure);
    } catch (const boost::system::system_error& error) {
        return {SocketCallEnd::End::failed, error.code().message()};
    } catch (const std::exception& error) {
        return {SocketCallEnd::End::failed, error.what()};
    }
    return {SocketCallEnd::End::done, {}};
}

} // namespace lorvane::backend
