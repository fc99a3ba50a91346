// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/SocketReaders.h"
#include "engines/SocketSpeech.h"

#include <algorithm>
#include <array>
#include <bit>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/json.hpp>

namespace lorvane::backend {

namespace asio = boost::asio;
namespace json = boost::json;

namespace {

constexpr std::size_t chunk = sampleRate; // samples of one event: a second
static_assert(std::endian::native == std::endian::little, "samples go out as they lie in memory");

std::string eventLine(std::string_view type, json::object data, std::size_t payload) {
    json::object event{{"type", type}, {"data", std::move(data)}};
    if (payload > 0)
        event["payload_length"] = payload;
    return json::serialize(event) + '\n';
}

class Conversation {
 public:
    Conversation(asio::any_io_executor executor, const SocketSpeechCall& call)
        : call_(call), stream_(executor), resolver_(executor) {}

    asio::awaitable<void> connect() {
        const auto found =
            co_await resolver_.async_resolve(call_.address.host, call_.address.port, asio::use_awaitable);
        stream_.expires_after(call_.connectTime);
        co_await stream_.async_connect(found, asio::use_awaitable);
    }

    asio::awaitable<void> send(std::string event, Samples sound) {
        stream_.expires_after(call_.answerTime);
        event.append(reinterpret_cast<const char*>(sound.data()), sound.size_bytes());
        co_await asio::async_write(stream_, asio::buffer(event), asio::use_awaitable);
    }

    asio::awaitable<void> listen(WyomingReader& reader) {
        std::array<char, 16 * 1024> bytes;
        for (bool whole = false; !whole;) {
            stream_.expires_after(call_.answerTime);
            const auto count = co_await stream_.async_read_some(asio::buffer(bytes), asio::use_awaitable);
            whole = reader.feed({bytes.data(), count});
        }
    }

 private:
    const SocketSpeechCall& call_;
    boost::beast::tcp_stream stream_;
    asio::ip::tcp::resolver resolver_;
};

json::object wishOf(const SocketSpeechCall& call) {
    json::object wish;
    if (!call.language.empty())
        wish["language"] = call.language;
    if (!call.model.empty())
        wish["name"] = call.model;
    return wish;
}

asio::awaitable<void> speak(Conversation& conversation, const SocketSpeechCall& call) {
    const json::object format{{"rate", sampleRate}, {"width", 2}, {"channels", 1}};
    co_await conversation.send(eventLine("transcribe", wishOf(call), 0), {});
    co_await conversation.send(eventLine("audio-start", format, 0), {});
    for (std::size_t at = 0; at < call.samples.size(); at += chunk) {
        const auto part = call.samples.subspan(at, std::min(chunk, call.samples.size() - at));
        co_await conversation.send(eventLine("audio-chunk", format, part.size_bytes()), part);
    }
    co_await conversation.send(eventLine("audio-stop", {}, 0), {});
}

} // namespace

SocketSpeechAnswer hearByWyoming(const SocketSpeechCall& call, const std::stop_token& stop) {
    SocketSpeechAnswer answer;
    const auto talk = [&]() -> asio::awaitable<void> {
        Conversation conversation(co_await asio::this_coro::executor, call);
        co_await conversation.connect();
        co_await speak(conversation, call);
        WyomingReader reader;
        co_await conversation.listen(reader);
        answer.text = reader.text();
    };
    answer.call = runSocketCall(talk, call.wholeTime, stop);
    return answer;
}

} // namespace lorvane::backend
