// SPDX-License-Identifier: GPL-3.0-or-later
// What a Vosk server answers: messages, a line of the input each.
#include "engines/SocketReaders.h"
#include "fuzz/Fuzz.h"

#include <algorithm>

using namespace lorvane::backend;
using namespace lorvane::backend::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto input = textOf(data, size);
    VoskReader reader;
    std::string before;
    try {
        while (!input.empty()) {
            const auto end = std::min(input.find('\n'), input.size());
            reader.hear(input.substr(0, end));
            require(reader.text().starts_with(before), "a text only grows");
            require(reader.text().size() <= longestSocketText, "a text is bounded");
            before = reader.text();
            input.remove_prefix(std::min(end + 1, input.size()));
        }
    } catch (const BadSpeechAnswer& bad) {
        require(std::string_view(bad.what()).size() < 64, "an error tells nothing of the content");
    }
    return 0;
}
