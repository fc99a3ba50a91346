// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/SocketSpeech.h"

#include <algorithm>
#include <bit>
#include <boost/asio/read.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/json.hpp>
#include <stdexcept>

namespace lorvane::backend {

namespace asio = boost::asio;
namespace json = boost::json;

namespace {

constexpr std::size_t chunk = sampleRate; // samples of one event: a second
constexpr std::size_t longestLine = std::size_t(64) << 10;
constexpr std::size_t mostData = std::size_t(4) << 20;
static_assert(std::endian::native == std::endian::little, "samples go out as they lie in memory");

struct Event {
    std::string type;
    json::object data;
};

std::string textIn(const json::object& object, const char* key) {
    const auto* value = object.if_contains(key);
    return value && value->is_string() ? std::string(value->as_string()) : std::string();
}

std::size_t lengthIn(const json::object& object, const char* key) {
    const auto* value = object.if_contains(key);
    if (!value || value->is_null())
        return 0;
    json::error_code error;
    const auto length = value->to_number<std::uint64_t>(error);
    if (error || length > mostData)
        throw std::runtime_error("an event of no possible length");
    return static_cast<std::size_t>(length);
}

json::object objectOf(std::string_view text) {
    json::error_code error;
    auto value = json::parse(text, error);
    if (error || !value.is_object())
        throw std::runtime_error("an event that is no JSON object");
    return std::move(value.as_object());
}

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

    asio::awaitable<Event> receive() {
        stream_.expires_after(call_.answerTime);
        const auto length = co_await asio::async_read_until(stream_, asio::dynamic_buffer(read_, longestLine),
                                                            '\n', asio::use_awaitable);
        const auto head = objectOf(std::string_view(read_).substr(0, length));
        read_.erase(0, length);
        Event event{textIn(head, "type"), {}};
        if (const auto* data = head.if_contains("data"); data && data->is_object())
            event.data = data->as_object();
        const auto data = lengthIn(head, "data_length");
        const auto payload = lengthIn(head, "payload_length");
        co_await fill(data + payload);
        if (data > 0)
            for (auto& [key, value] : objectOf(std::string_view(read_).substr(0, data)))
                event.data[key] = value;
        read_.erase(0, data + payload);
        co_return event;
    }

 private:
    asio::awaitable<void> fill(std::size_t bytes) {
        if (read_.size() < bytes)
            co_await asio::async_read(stream_, asio::dynamic_buffer(read_),
                                      asio::transfer_at_least(bytes - read_.size()), asio::use_awaitable);
    }

    const SocketSpeechCall& call_;
    boost::beast::tcp_stream stream_;
    asio::ip::tcp::resolver resolver_;
    std::string read_;
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

// A server that streams sends pieces before the whole; one that sends only pieces ends them with a stop.
asio::awaitable<void> listen(Conversation& conversation, std::string& text) {
    std::string pieces;
    for (;;) {
        const Event event = co_await conversation.receive();
        if (event.type == "error")
            throw std::runtime_error("the server told an error");
        if (event.type == "transcript-chunk")
            pieces += textIn(event.data, "text");
        if (event.type == "transcript-stop")
            text = pieces;
        if (event.type == "transcript")
            text = textIn(event.data, "text");
        if (std::max(pieces.size(), text.size()) > longestSocketText)
            throw std::runtime_error("a transcript without end");
        if (event.type == "transcript" || event.type == "transcript-stop")
            co_return;
    }
}

} // namespace

SocketSpeechAnswer hearByWyoming(const SocketSpeechCall& call, const std::stop_token& stop) {
    SocketSpeechAnswer answer;
    const auto talk = [&]() -> asio::awaitable<void> {
        Conversation conversation(co_await asio::this_coro::executor, call);
        co_await conversation.connect();
        co_await speak(conversation, call);
        co_await listen(conversation, answer.text);
    };
    answer.call = runSocketCall(talk, call.wholeTime, stop);
    return answer;
}

} // namespace lorvane::backend
