// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/HttpWriter.h"

#include <array>
#include <boost/asio.hpp>
#include <boost/beast/http/status.hpp>
#include <charconv>

namespace lorvane::backend {

namespace net = boost::asio;
namespace http = boost::beast::http;

namespace {

constexpr auto lingerTime = std::chrono::seconds(5);
constexpr std::size_t readStep = 16 * 1024;
constexpr auto tupled = net::as_tuple(net::use_awaitable);

void addField(std::string& text, std::string_view name, std::string_view value) {
    text.append(name).append(": ").append(value).append("\r\n");
}

std::string headOf(int status, const HttpWriter::Form& form) {
    std::string text;
    text.reserve(512);
    text += form.version >= 11 ? "HTTP/1.1 " : "HTTP/1.0 ";
    const auto reason = http::obsolete_reason(static_cast<http::status>(status));
    text.append(std::to_string(status)).append(1, ' ').append(reason.data(), reason.size()).append("\r\n");
    // What each version of the protocol does without being told is not told.
    if (form.version >= 11 && !form.keepAlive)
        addField(text, "Connection", "close");
    if (form.version < 11 && form.keepAlive)
        addField(text, "Connection", "keep-alive");
    addField(text, "Cache-Control", "no-store");
    return text;
}

std::string chunkOf(const std::string& text) {
    std::array<char, 20> size{};
    const auto end = std::to_chars(size.data(), size.data() + size.size(), text.size(), 16).ptr;
    std::string chunk;
    chunk.reserve(text.size() + 12);
    chunk.append(size.data(), end).append("\r\n").append(text).append("\r\n");
    return chunk;
}

} // namespace

net::awaitable<bool> HttpWriter::write(std::string text, std::size_t from) {
    stream_.expires_after(writeTime_);
    const auto [error, size] = co_await net::async_write(stream_, net::buffer(text) + from, tupled);
    stream_.expires_never();
    co_return !error;
}

net::awaitable<bool> HttpWriter::response(Response response, Form form) {
    auto text = headOf(response.status, form);
    addField(text, "Content-Type", response.contentType);
    addField(text, "X-Content-Type-Options", "nosniff");
    if (response.contentType.starts_with("text/html"))
        addField(text, "Content-Security-Policy", "default-src 'none'; style-src 'unsafe-inline'");
    if (response.status == 405)
        addField(text, "Allow", form.allow);
    if (response.retryAfter > 0)
        addField(text, "Retry-After", std::to_string(response.retryAfter));
    addField(text, "Content-Length", std::to_string(response.body.size()));
    text += "\r\n";
    if (!form.headOnly)
        text += response.body;
    // Nearly always the socket takes an answer at once, and no deadline has to be kept. Lines are never sent
    // like this: a worker that is quick enough would keep the thread from everybody else.
    boost::system::error_code error;
    const auto sent = stream_.socket().write_some(net::buffer(text), error);
    if (sent == text.size())
        co_return true;
    if (error && error != net::error::would_block)
        co_return false;
    const bool written = co_await write(std::move(text), sent);
    co_return written;
}

net::awaitable<bool> HttpWriter::streamHead(Form form) {
    auto text = headOf(200, form);
    addField(text, "Content-Type", "application/x-ndjson");
    addField(text, "X-Accel-Buffering", "no");
    if (form.version >= 11)
        addField(text, "Transfer-Encoding", "chunked");
    text += "\r\n";
    const bool written = co_await write(std::move(text));
    co_return written;
}

net::awaitable<bool> HttpWriter::lines(std::string lines, unsigned version) {
    auto text = version < 11 ? std::move(lines) : chunkOf(lines);
    lines = {};
    const bool written = co_await write(std::move(text));
    co_return written;
}

net::awaitable<bool> HttpWriter::lastChunk() {
    std::string text = "0\r\n\r\n";
    const bool written = co_await write(std::move(text));
    co_return written;
}

net::awaitable<bool> HttpWriter::goOn() {
    std::string text = "HTTP/1.1 100 Continue\r\n\r\n";
    const bool written = co_await write(std::move(text));
    co_return written;
}

net::awaitable<void> HttpWriter::linger() {
    boost::system::error_code ignored;
    stream_.socket().shutdown(net::ip::tcp::socket::shutdown_send, ignored);
    stream_.expires_after(lingerTime);
    std::vector<char> thrown(readStep);
    for (;;) {
        const auto [error, size] = co_await stream_.async_read_some(net::buffer(thrown), tupled);
        if (error || size == 0)
            break;
    }
}

} // namespace lorvane::backend
