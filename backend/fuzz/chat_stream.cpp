// SPDX-License-Identifier: GPL-3.0-or-later
// The answer of a language server, cut as the first bytes say: the text must not hang on the cuts.
#include "fuzz/Fuzz.h"
#include "language/ChatStream.h"

using namespace lorvane::backend;
using namespace lorvane::backend::fuzz;

namespace {

struct Heard {
    ChatEnd end = ChatEnd::failed;
    std::string text;
    bool operator==(const Heard&) const = default;
};

Heard read(std::string_view body, std::size_t piece) {
    Heard heard;
    ChatStream stream([&](std::string_view text) {
        require(!text.empty(), "nothing is no text");
        heard.text += text;
        return heard.text.size() < 10'000;
    });
    while (!body.empty()) {
        const auto size = std::min(piece, body.size());
        stream.feed(body.substr(0, size));
        body.remove_prefix(size);
    }
    heard.end = stream.finish();
    require((heard.end == ChatEnd::complete) == stream.reason().empty(), "a failure has a reason");
    return heard;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto body = textOf(data, size);
    const std::size_t piece = 1 + takeByte(body) % 32U;
    require(read(body, piece) == read(body, body.size() + 1), "the cuts change nothing");
    return 0;
}
