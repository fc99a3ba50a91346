// SPDX-License-Identifier: GPL-3.0-or-later
// What models and speech servers answer in JSON.
#include "language/Answers.h"
#include "engines/Transcript.h"
#include "fuzz/Fuzz.h"
#include "language/Labels.h"

#include <algorithm>

using namespace lorvane::backend;
using namespace lorvane::backend::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto answer = textOf(data, size);
    if (const auto insights = readInsights(answer)) {
        require(!insights->summary.empty() && insights->summary.size() <= 4000, "a summary is bounded");
        require(insights->strengths.size() <= 8 && insights->suggestions.size() <= 8, "lists are bounded");
    }
    if (const auto summary = readSummary(answer))
        require(!summary->empty(), "a summary says something");
    if (const auto label = readLabel(answer)) {
        const auto known = labels();
        require(label->empty() || std::find(known.begin(), known.end(), *label) != known.end(),
                "a label is known");
    }
    if (const auto text = transcriptOf(answer))
        require(text->find_first_of("\r\n\t") == std::string::npos, "a transcript is one line");
    return 0;
}
