// SPDX-License-Identifier: GPL-3.0-or-later
// Bodies of the requests beside the takes.
#include "api/JsonBody.h"
#include "api/Wire.h"
#include "fuzz/Fuzz.h"

using namespace lorvane::backend;
using namespace lorvane::backend::fuzz;

namespace {

template <class Read>
void attempt(const Read& read) {
    try {
        read();
    } catch (const BadBody& bad) {
        require(std::string_view(bad.what()).size() < 64, "an error names a key and no content");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto text = textOf(data, size);
    if (const auto device = readDevice(text))
        require(device->size() == 36, "a device is a UUID");
    attempt([&] {
        const JsonBody body(text);
        attempt([&] { require(body.text("text", 100).size() <= 100, "texts are bounded"); });
        attempt(
            [&] { require(body.optionalText("email", 10).value_or("").size() <= 10, "texts are bounded"); });
        attempt([&] { require(body.texts("samples", 5).size() <= 5, "lists are bounded"); });
        attempt([&] { require(body.textMap("meta", 5).size() <= 5, "maps are bounded"); });
    });
    return 0;
}
