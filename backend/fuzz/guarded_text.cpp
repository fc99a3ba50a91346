// SPDX-License-Identifier: GPL-3.0-or-later
// What a model writes about a text, both from the input: what is shown is a beginning of what is kept.
#include "fuzz/Fuzz.h"
#include "language/GuardedText.h"

using namespace lorvane::backend;
using namespace lorvane::backend::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto input = textOf(data, size);
    const std::size_t piece = 1 + takeByte(input) % 16U;
    const auto half = std::min(input.find('\0'), input.size());
    const auto given = input.substr(0, half);
    auto written = input.substr(half);
    std::string shown;
    const GuardedText::OnFragment onFragment = [&](std::string fragment) {
        require(!fragment.empty(), "nothing is no fragment");
        shown += fragment;
        return true;
    };
    GuardedText text(given, FaithGuard::forCleanUp(false), "0123456789abcdef", onFragment);
    text.begin();
    bool more = true;
    while (more && !written.empty()) {
        const auto count = std::min(piece, written.size());
        more = text.hear(written.substr(0, count));
        written.remove_prefix(count);
    }
    const bool finished = more && text.finish();
    require(text.text().starts_with(shown), "what is shown is kept");
    require(!finished || shown == text.text(), "all of it is shown in the end");
    require(text.committed() == !shown.empty(), "it knows whether something was shown");
    require(shown.find('\x1b') == std::string::npos, "no control characters");
    return 0;
}
