// SPDX-License-Identifier: GPL-3.0-or-later
// Clean-up by rules: however the words are cut into segments, the text is the same.
#include "engines/CleanUp.h"
#include "fuzz/Fuzz.h"

using namespace lorvane::backend;
using namespace lorvane::backend::fuzz;

namespace {

constexpr const char* styles[] = {"", "lowercase", "no punctuation", "casual", "formal", "spell out numbers"};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto input = textOf(data, size);
    const auto* style = styles[takeByte(input) % std::size(styles)];
    const auto every = 1 + takeByte(input) % 7U;
    CleanUp whole({}, style);
    const auto first = whole.add(input);
    const auto text = first + whole.finish();
    CleanUp cut({}, style);
    std::string pieces;
    std::size_t begin = 0;
    unsigned blanks = 0;
    for (std::size_t at = 0; at < input.size(); ++at) {
        if (input[at] != ' ' || ++blanks % every != 0)
            continue;
        pieces += cut.add(input.substr(begin, at - begin));
        begin = at;
    }
    pieces += cut.add(input.substr(begin));
    pieces += cut.finish();
    require(pieces == text, "the cuts change nothing");
    require(text.size() <= 4 * input.size() + 16, "the text does not grow without bounds");
    CleanUp pausing(input.substr(0, input.size() / 2), style);
    pausing.add(input, std::chrono::milliseconds(2000));
    pausing.finish();
    return 0;
}
