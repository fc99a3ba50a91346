// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/SocketReaders.h"
#include "engines/SocketSpeech.h"

#include <bit>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/websocket.hpp>

namespace lorvane::backend {

namespace asio = boost::asio;
namespace beast = boost::beast;

namespace {

constexpr std::size_t chunk = sampleRate; // samples of one message: a second
constexpr std::size_t longestAnswer = std::size_t(1) << 20;
static_assert(std::endian::native == std::endian::little, "samples go out as they lie in memory");

class Conversation {
 public:
    Conversation(asio::any_io_executor executor, const SocketSpeechCall& call)
        : call_(call), socket_(executor), resolver_(executor) {}

    asio::awaitable<void> connect() {
        const auto found =
            co_await resolver_.async_resolve(call_.address.host, call_.address.port, asio::use_awaitable);
        auto& stream = beast::get_lowest_layer(socket_);
        stream.expires_after(call_.connectTime);
        co_await stream.async_connect(found, asio::use_awaitable);
        stream.expires_never();
        socket_.set_option(
            beast::websocket::stream_base::timeout{call_.connectTime, call_.answerTime, false});
        socket_.read_message_max(longestAnswer);
        const bool six = call_.address.host.find(':') != std::string::npos;
        const auto host =
            (six ? '[' + call_.address.host + ']' : call_.address.host) + ':' + call_.address.port;
        co_await socket_.async_handshake(host, call_.address.path, asio::use_awaitable);
    }

    asio::awaitable<void> sendText(std::string text) {
        socket_.text(true);
        co_await socket_.async_write(asio::buffer(text), asio::use_awaitable);
    }

    asio::awaitable<void> sendSound(Samples part) {
        socket_.binary(true);
        co_await socket_.async_write(asio::buffer(part.data(), part.size_bytes()), asio::use_awaitable);
    }

    // The server answers each piece of sound, and the end.
    asio::awaitable<void> receive(VoskReader& reader) {
        beast::flat_buffer buffer;
        co_await socket_.async_read(buffer, asio::use_awaitable);
        reader.hear(beast::buffers_to_string(buffer.data()));
    }

 private:
    const SocketSpeechCall& call_;
    beast::websocket::stream<beast::tcp_stream> socket_;
    asio::ip::tcp::resolver resolver_;
};

} // namespace

SocketSpeechAnswer hearByVosk(const SocketSpeechCall& call, const std::stop_token& stop) {
    SocketSpeechAnswer answer;
    const auto talk = [&]() -> asio::awaitable<void> {
        VoskReader reader;
        Conversation conversation(co_await asio::this_coro::executor, call);
        co_await conversation.connect();
        co_await conversation.sendText(R"({"config":{"sample_rate":)" + std::to_string(sampleRate) + "}}");
        for (std::size_t at = 0; at < call.samples.size(); at += chunk) {
            co_await conversation.sendSound(
                call.samples.subspan(at, std::min(chunk, call.samples.size() - at)));
            co_await conversation.receive(reader);
        }
        // The server compares these very bytes.
        co_await conversation.sendText(R"({"eof" : 1})");
        co_await conversation.receive(reader);
        answer.text = reader.text();
    };
    answer.call = runSocketCall(talk, call.wholeTime, stop);
    return answer;
}

} // namespace lorvane::backend
