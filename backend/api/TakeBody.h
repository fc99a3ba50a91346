// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "storage/Storage.h"

#include <string>
#include <string_view>
#include <variant>

namespace lorvane::backend {

struct TakeFields {
    std::string ext;
    std::string lang;
    std::string translate;
    std::string style;
    std::string prefix;
    std::string context;
};

struct Take {
    TakeFields fields;
    // The file's bytes: a view into the request's body, or the decoded bytes of a body in JSON form.
    std::variant<std::string_view, std::string> audio;

    std::string_view audioBytes() const {
        return std::visit([](const auto& bytes) { return std::string_view(bytes); }, audio);
    }
};

struct MalformedTake {
    std::string_view reason; // for the answer and the log; says nothing of the content
};

// Both forms of a take on the wire:
//  - "application/vnd.tirra.take": a length n as 4 bytes, big-endian, n bytes of JSON (at most 64 KiB), the
//  audio;
//  - "application/json": one object, the audio in base64 under "audio".
// The fields are strings, unknown ones are ignored, "ext" must be there. The result refers to `body`.
std::variant<Take, MalformedTake> readTake(std::string_view contentType, std::string_view body);
// Bytes of memory that reading a body may take beside it: a JSON form is copied on its way.
std::size_t memoryToReadTake(std::string_view contentType, std::size_t bodySize);

// Of who counts takes, and of who remembers them: the client's id with everything that the text comes of, so
// that another content under an id that was used is another take. Nothing without an id.
TakeId identityOfTake(std::string_view id, const Take& take);

} // namespace lorvane::backend
