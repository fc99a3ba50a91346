// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/Backend.h"
#include "storage/SqliteStorage.h"
#include "testing/Connection.h"
#include "testing/TemporaryFolder.h"

#include <memory>
#include <string>
#include <vector>

namespace lorvane::backend::testing {

inline constexpr const char* deviceOne = "6F9619FF-8B86-D011-B42D-00C04FC964FF";
inline constexpr const char* deviceTwo = "00000000-0000-4000-8000-000000000002";

// The whole service on a free port, with a database of its own.
class BackendUnderTest {
 public:
    explicit BackendUnderTest(std::unique_ptr<Engine> engine, const BackendOptions& options = {})
        : backend_(withSpool(options), std::make_unique<SqliteStorage>(folder_ / "backend.sqlite"),
                   std::move(engine)) {
        backend_.start();
    }
    std::uint16_t port() const { return backend_.port(); }
    Backend& backend() { return backend_; }

    // Empty when the answer is no token.
    std::string registerDevice(const std::string& device = deviceOne) {
        Call call{"POST", "/api/register", "", "application/json", "", "", R"({"device":")" + device + "\"}"};
        const auto reply = request(port(), call);
        const std::string before = R"({"token":")";
        if (reply.status != 200 || !reply.body.starts_with(before))
            return {};
        return reply.body.substr(before.size(), 64);
    }
    Call take(const std::string& endpoint, const std::string& token, const std::string& audio,
              const std::string& takeId = "", const std::string& fields = R"({"ext":"wav"})") const {
        return {"POST", "/api/" + endpoint,       token, "application/vnd.tirra.take", takeId,
                "",     framedTake(fields, audio)};
    }

    // The letters that were sent, in their order.
    std::vector<std::string> letters() const;
    Reply post(const std::string& path, const std::string& token, const std::string& body) const {
        return request(backend_.port(), {"POST", path, token, "application/json", "", "", body});
    }
    Reply get(const std::string& path, const std::string& token = "") const {
        return request(backend_.port(), {"GET", path, token, "", "", "", ""});
    }
    std::filesystem::path file(const std::string& name) const { return folder_ / name; }

 private:
    BackendOptions withSpool(BackendOptions options) const {
        if (options.mail.spool.empty())
            options.mail.spool = folder_ / "mail";
        return options;
    }
    TemporaryFolder folder_;
    Backend backend_;
};

// The lines of a stream, taken apart.
struct StreamedTake {
    std::vector<std::string> deltas;
    std::string done; // the text of the last line
    std::string raw;
    std::string error;
};

StreamedTake readStream(const std::string& body);
// A string member of a JSON object; empty when there is none.
std::string member(const std::string& json, const std::string& name);

} // namespace lorvane::backend::testing
