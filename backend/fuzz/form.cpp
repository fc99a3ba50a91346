// SPDX-License-Identifier: GPL-3.0-or-later
// A multipart form as it goes to a speech server, over a socket, and read there by the rules of RFC 7578:
// whatever the values hold, the parts are the ones that were sent. Building is libcurl's; this says that we
// use it well.
#include "fuzz/Fuzz.h"
#include "net/HttpCall.h"
#include "testing/ScriptedUpstream.h"

using namespace lorvane::backend;
using namespace lorvane::backend::fuzz;
using lorvane::backend::testing::jsonAnswer;
using lorvane::backend::testing::ScriptedUpstream;

namespace {

std::vector<std::string> valuesIn(std::string_view request) {
    const auto head = request.substr(0, request.find("\r\n\r\n"));
    const auto at = head.find("boundary=");
    require(at != std::string_view::npos, "a form has a boundary");
    const auto line = head.substr(at + 9, head.find("\r\n", at) - at - 9);
    const auto boundary = "\r\n--" + std::string(line);
    auto body = request.substr(head.size() + 2); // with the line end before the first boundary
    std::vector<std::string> values;
    for (auto begin = body.find(boundary); begin != std::string_view::npos;) {
        body.remove_prefix(begin + boundary.size());
        if (body.starts_with("--"))
            return values;
        begin = body.find(boundary);
        const auto part = body.substr(0, begin);
        const auto end = part.find("\r\n\r\n");
        require(end != std::string_view::npos, "a part has a head");
        values.emplace_back(part.substr(end + 4));
    }
    require(false, "a form ends");
    return values;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto input = textOf(data, size);
    const auto half = std::min<std::size_t>(takeByte(input), input.size());
    HttpCall call;
    call.form = {{"file", std::string(input), "take.wav", "audio/wav"},
                 {"prompt", std::string(input.substr(0, half)), {}, {}},
                 {"model", std::string(input.substr(half)), {}, {}}};
    std::vector<std::string> values;
    {
        ScriptedUpstream upstream([&](const std::string& request) {
            values = valuesIn(request);
            return std::optional(jsonAnswer(200, "{}"));
        });
        call.url = upstream.url();
        const auto answer = callHttp(call, {});
        require(answer.end == HttpAnswer::End::whole && answer.status == 200, "the form arrives");
    }
    require(values.size() == 3, "three parts");
    for (std::size_t i = 0; i < values.size(); ++i)
        require(values[i] == call.form[i].value, "a part is what was sent");
    return 0;
}
