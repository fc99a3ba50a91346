// SPDX-License-Identifier: GPL-3.0-or-later
// What is read out of headers.
#include "api/HttpText.h"
#include "fuzz/Fuzz.h"
#include "util/Base64.h"

using namespace lorvane::backend;
using namespace lorvane::backend::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto header = textOf(data, size);
    const auto lower = lowerCase(header);
    require(lowerCase(lower) == lower && lower.size() == header.size(), "small letters stay small");
    require(mediaType(header).find(';') == std::string::npos, "a type has no parameters");
    require(bearerToken(header).size() <= header.size(), "a token is a part of its header");
    const auto word = usableHeaderWord(header);
    require(word.empty() || (word == header && word.size() <= 64), "a word is the header or nothing");
    for (const char c : word)
        require(c >= ' ' && c <= '~', "a word is printable");
    if (const auto decoded = decodeBase64(header))
        require(decoded->size() <= header.size(), "base64 only shrinks");
    return 0;
}
