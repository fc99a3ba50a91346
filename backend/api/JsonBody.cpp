// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/JsonBody.h"

#include "api/BoundedJson.h"

namespace lorvane::backend {

namespace json = boost::json;

namespace {

// A list of short texts takes several times its bytes.
constexpr std::size_t memoryOfJsonByte = 8;

[[noreturn]] void fail(std::string_view key) { throw BadBody("bad " + std::string(key)); }

json::string_view view(std::string_view text) { return {text.data(), text.size()}; }

std::string textOf(const json::value& value, std::string_view key, std::size_t most) {
    if (!value.is_string() || value.as_string().size() > most)
        fail(key);
    return {value.as_string().data(), value.as_string().size()};
}

} // namespace

JsonBody::JsonBody(std::string_view body)
    : json_(std::make_unique<BoundedJson>(body, memoryOfJsonByte)), object_(json_->object()) {
    if (!object_)
        throw BadBody("not a JSON object");
}

JsonBody::~JsonBody() = default;

std::string JsonBody::text(std::string_view key, std::size_t most) const {
    const auto* value = object_->if_contains(view(key));
    if (!value)
        fail(key);
    return textOf(*value, key, most);
}

std::optional<std::string> JsonBody::optionalText(std::string_view key, std::size_t most) const {
    const auto* value = object_->if_contains(view(key));
    return value ? std::optional(textOf(*value, key, most)) : std::nullopt;
}

std::vector<std::string> JsonBody::texts(std::string_view key, std::size_t mostEntries) const {
    const auto* value = object_->if_contains(view(key));
    if (!value || !value->is_array() || value->as_array().size() > mostEntries)
        fail(key);
    std::vector<std::string> texts;
    for (const auto& entry : value->as_array())
        texts.push_back(textOf(entry, key, std::string::npos));
    return texts;
}

std::map<std::string, std::string> JsonBody::textMap(std::string_view key, std::size_t mostEntries) const {
    std::map<std::string, std::string> map;
    const auto* value = object_->if_contains(view(key));
    if (!value)
        return map;
    if (!value->is_object() || value->as_object().size() > mostEntries)
        fail(key);
    for (const auto& entry : value->as_object())
        map.emplace(std::string(entry.key().data(), entry.key().size()),
                    textOf(entry.value(), key, std::string::npos));
    return map;
}

} // namespace lorvane::backend
