// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <functional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace lorvane::backend {

struct FormPart {
    std::string name;
    std::string value;
    std::string fileName; // empty: a plain field
    std::string type;
};

// POST of a multipart/form-data body, or of JSON.
struct HttpCall {
    std::string url; // http or https
    std::string bearer;
    std::vector<FormPart> form;
    std::string json; // the body instead of the form, unless empty
    // Gets the body of an answer with status 200 as it comes, instead of HttpAnswer::body; false: no more of
    // it is wanted. The calling thread is callHttp's own; what it throws, callHttp throws.
    std::function<bool(std::string_view)> onBytes;
    std::chrono::milliseconds connectTime = std::chrono::seconds(5);
    std::chrono::milliseconds answerTime =
        std::chrono::seconds(30);                                 // from the sent request to the first byte
    std::chrono::milliseconds silence = std::chrono::seconds(60); // between two pieces of the answer
    std::chrono::milliseconds wholeTime = std::chrono::seconds(200);
    std::size_t mostBytes = std::size_t(4) << 20; // of the answer
};

struct HttpAnswer {
    enum class End {
        whole,
        enough, // onBytes wanted no more
        unreachable,
        late,
        broken,
        stopped,
    };
    End end = End::broken;
    int status = 0; // when whole, or enough
    std::string body;
    std::string reason; // unless whole or enough; holds nothing that was sent or received
};

// Blocks; a stop is seen at once. Follows no redirection. Any thread.
HttpAnswer callHttp(const HttpCall& call, const std::stop_token& stop);

} // namespace lorvane::backend
