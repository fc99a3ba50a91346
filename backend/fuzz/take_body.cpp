// SPDX-License-Identifier: GPL-3.0-or-later
// Both forms of a take: the framing and the JSON.
#include "api/TakeBody.h"
#include "fuzz/Fuzz.h"

using namespace lorvane::backend;
using namespace lorvane::backend::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto body = textOf(data, size);
    for (const auto* type : {"application/vnd.tirra.take", "application/json", "text/plain"}) {
        const auto read = readTake(type, body);
        const auto* take = std::get_if<Take>(&read);
        if (!take)
            continue;
        require(!take->fields.ext.empty() || body.size() > 2, "a take has an ext");
        if (const auto* view = std::get_if<std::string_view>(&take->audio))
            require(view->data() >= body.data() && view->data() + view->size() == body.data() + body.size(),
                    "the audio is the rest of the body");
        else
            require(take->audioBytes().size() <= body.size(), "base64 only shrinks");
    }
    return 0;
}
