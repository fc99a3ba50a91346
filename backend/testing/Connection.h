// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace lorvane::backend::testing {

struct Reply {
    int status = 0;                             // 0: the connection ended before a whole answer
    std::map<std::string, std::string> headers; // names in lower case
    std::string body;
};

// A plain blocking HTTP client over one loopback connection, which can also send what no client should. Every
// read gives up after `patience`.
class Connection {
 public:
    static constexpr std::chrono::seconds patience{30};

    explicit Connection(std::uint16_t port, int receiveBuffer = 0);
    ~Connection();
    Connection(Connection&& other) noexcept;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // False when the other side does not take it any more.
    bool send(std::string_view bytes);
    void close();
    void reset(); // the hard way: the other side sees a connection reset
    void shutdownSend();

    Reply readReply();
    // The head alone; then readLine for a body in chunks.
    Reply readHead();
    // A line of a chunked body without its end; nothing at the body's end, or when it broke off.
    std::optional<std::string> readLine();
    bool bodyEnded() const { return bodyEnded_; } // by its last chunk, not by a broken connection
    // Everything until the other side closes.
    std::string readAll();
    // True when the other side has closed within the time.
    bool closedWithin(std::chrono::milliseconds time);

    // Whether something comes, or the other side closes, within the time.
    bool readableWithin(std::chrono::milliseconds time) const;

    void setPatience(std::chrono::milliseconds time);

 private:
    bool fill();
    std::optional<std::string> takeLine();
    bool readChunk();

    int socket_ = -1;
    std::string buffer_;
    std::string body_;
    bool bodyEnded_ = false;
};

struct Call {
    std::string method = "POST";
    std::string path;
    std::string token;
    std::string contentType = "application/vnd.tirra.take";
    std::string takeId;
    std::string extraHeaders; // whole lines, each with its line end
    std::string body;
};

std::string requestText(const Call& call);
Reply request(std::uint16_t port, const Call& call);
Reply request(Connection& connection, const Call& call);

// A take in its framing. `fields` is the JSON as it stands.
std::string framedTake(std::string_view fields, std::string_view audio);

} // namespace lorvane::backend::testing
