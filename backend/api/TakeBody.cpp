// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/TakeBody.h"

#include "api/BoundedJson.h"
#include "util/Base64.h"

#include <array>
#include <boost/json.hpp>
#include <cstdint>
#include <optional>

namespace lorvane::backend {

namespace json = boost::json;

namespace {

constexpr std::size_t longestFields = 64 * 1024;

struct FieldName {
    std::string_view key;
    std::string TakeFields::*field;
};

constexpr auto fieldNames = std::to_array<FieldName>({
    {"ext", &TakeFields::ext},
    {"lang", &TakeFields::lang},
    {"translate", &TakeFields::translate},
    {"style", &TakeFields::style},
    {"prefix", &TakeFields::prefix},
    {"context", &TakeFields::context},
});

// Of the parser, for each byte of a text. A string is held twice for a moment, in parts when it has escapes.
constexpr std::size_t memoryOfJsonByte = 4;

std::string_view readFields(const json::object& object, TakeFields& fields) {
    for (const auto& name : fieldNames) {
        const auto* value = object.if_contains({name.key.data(), name.key.size()});
        if (!value)
            continue;
        if (!value->is_string())
            return "a field is not a string";
        const auto& text = value->as_string();
        (fields.*name.field).assign(text.data(), text.size());
    }
    return fields.ext.empty() ? "no ext" : "";
}

std::variant<Take, MalformedTake> readFramed(std::string_view body) {
    if (body.size() < 4)
        return MalformedTake{"shorter than its length field"};
    std::uint32_t length = 0;
    for (std::size_t i = 0; i < 4; ++i)
        length = length << 8 | static_cast<std::uint8_t>(body[i]);
    if (length > longestFields)
        return MalformedTake{"fields too long"};
    if (length > body.size() - 4)
        return MalformedTake{"shorter than its fields"};
    const BoundedJson json(body.substr(4, length), memoryOfJsonByte);
    const auto* object = json.object();
    if (!object)
        return MalformedTake{"fields are not a JSON object"};
    Take take;
    if (const auto reason = readFields(*object, take.fields); !reason.empty())
        return MalformedTake{reason};
    take.audio = body.substr(4 + length);
    return take;
}

std::variant<Take, MalformedTake> readJson(std::string_view body) {
    const BoundedJson json(body, memoryOfJsonByte);
    const auto* object = json.object();
    if (!object)
        return MalformedTake{"not a JSON object"};
    Take take;
    if (const auto reason = readFields(*object, take.fields); !reason.empty())
        return MalformedTake{reason};
    const auto* audio = object->if_contains("audio");
    if (!audio || !audio->is_string())
        return MalformedTake{"no audio"};
    const auto& text = audio->as_string();
    auto bytes = decodeBase64({text.data(), text.size()});
    if (!bytes)
        return MalformedTake{"audio is not base64"};
    take.audio = std::move(*bytes);
    return take;
}

} // namespace

std::variant<Take, MalformedTake> readTake(std::string_view contentType, std::string_view body) {
    if (contentType == "application/vnd.tirra.take")
        return readFramed(body);
    if (contentType == "application/json")
        return readJson(body);
    return MalformedTake{"unknown content type"};
}

std::size_t memoryToReadTake(std::string_view contentType, std::size_t bodySize) {
    return contentType == "application/json" ? (memoryOfJsonByte + 1) * bodySize : 0;
}

// The fields come in any order on the wire, so the digest is over their values, each with its length before
// it. "ext" is a name and changes nothing.
TakeId identityOfTake(std::string_view id, const Take& take) {
    if (id.empty())
        return std::nullopt;
    std::string all;
    const auto add = [&all](std::string_view part) {
        all.append(std::to_string(part.size())).append(":").append(part);
    };
    add(id);
    for (const auto& name : fieldNames)
        if (name.field != &TakeFields::ext)
            add(take.fields.*name.field);
    const auto audio = sha256(take.audioBytes());
    add(asBytes(audio));
    return sha256(all);
}

} // namespace lorvane::backend
