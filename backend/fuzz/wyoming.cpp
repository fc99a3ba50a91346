// SPDX-License-Identifier: GPL-3.0-or-later
// What a Wyoming server sends, whole and in pieces: the pieces change nothing.
#include "engines/SocketReaders.h"
#include "fuzz/Fuzz.h"

#include <algorithm>

using namespace lorvane::backend;
using namespace lorvane::backend::fuzz;

namespace {

std::string outcomeOf(std::string_view answer, std::size_t piece) {
    WyomingReader reader;
    try {
        bool whole = false;
        while (!whole && !answer.empty()) {
            const auto count = std::min(piece, answer.size());
            whole = reader.feed(answer.substr(0, count));
            answer.remove_prefix(count);
        }
        require(reader.text().size() <= longestSocketText, "a text is bounded");
        return (whole ? "whole " : "more ") + reader.text();
    } catch (const BadSpeechAnswer& bad) {
        return std::string("bad ") + bad.what();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto input = textOf(data, size);
    const std::size_t piece = 1 + takeByte(input);
    require(outcomeOf(input, piece) == outcomeOf(input, input.size() + 1), "the pieces change nothing");
    return 0;
}
