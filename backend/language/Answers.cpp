// SPDX-License-Identifier: GPL-3.0-or-later
#include "language/Answers.h"

#include "language/Labels.h"

#include <algorithm>
#include <boost/json.hpp>

namespace lorvane::backend {

namespace json = boost::json;

namespace {

constexpr std::size_t longestSummary = 4000; // bytes
constexpr std::size_t longestEntry = 1000;
constexpr std::size_t mostEntries = 8;

std::optional<json::object> objectIn(std::string_view answer) {
    const auto begin = answer.find('{');
    const auto end = answer.rfind('}');
    if (begin == std::string_view::npos || end == std::string_view::npos || end < begin)
        return std::nullopt;
    json::error_code error;
    auto value = json::parse({answer.data() + begin, end - begin + 1}, error);
    if (error || !value.is_object())
        return std::nullopt;
    return std::move(value.as_object());
}

std::optional<std::string> textOf(const json::object& object, std::string_view key, std::size_t most) {
    const auto* value = object.if_contains({key.data(), key.size()});
    if (!value || !value->is_string() || value->as_string().size() > most)
        return std::nullopt;
    const std::string text(value->as_string().data(), value->as_string().size());
    if (text.find_first_not_of(" \t\r\n") == std::string::npos)
        return std::nullopt;
    return text;
}

const json::array* listOf(const json::object& object, std::string_view key) {
    const auto* value = object.if_contains({key.data(), key.size()});
    return value && value->is_array() && value->as_array().size() <= mostEntries ? &value->as_array()
                                                                                 : nullptr;
}

std::optional<std::vector<std::string>> textsOf(const json::array& list) {
    std::vector<std::string> texts;
    for (const auto& entry : list) {
        auto text = textOf({{"text", entry}}, "text", longestEntry);
        if (!text)
            return std::nullopt;
        texts.push_back(std::move(*text));
    }
    return texts;
}

// Objects of two texts.
template <class Entry>
std::optional<std::vector<Entry>> pairsOf(const json::array& list, std::string_view first,
                                          std::string_view second) {
    std::vector<Entry> entries;
    for (const auto& entry : list) {
        if (!entry.is_object())
            return std::nullopt;
        auto one = textOf(entry.as_object(), first, longestEntry);
        auto two = textOf(entry.as_object(), second, longestEntry);
        if (!one || !two)
            return std::nullopt;
        entries.push_back({std::move(*one), std::move(*two)});
    }
    return entries;
}

} // namespace

std::optional<Insights> readInsights(std::string_view answer) {
    const auto object = objectIn(answer);
    if (!object)
        return std::nullopt;
    const auto* strengths = listOf(*object, "strengths");
    const auto* suggestions = listOf(*object, "suggestions");
    const auto* resources = listOf(*object, "resources");
    auto summary = textOf(*object, "summary", longestSummary);
    if (!summary || !strengths || !suggestions || !resources)
        return std::nullopt;
    auto first = textsOf(*strengths);
    auto second = pairsOf<Suggestion>(*suggestions, "title", "detail");
    auto third = pairsOf<Resource>(*resources, "title", "why");
    if (!first || !second || !third)
        return std::nullopt;
    return Insights{std::move(*summary), std::move(*first), std::move(*second), std::move(*third)};
}

std::optional<std::string> readSummary(std::string_view answer) {
    const auto object = objectIn(answer);
    return object ? textOf(*object, "summary", longestSummary) : std::nullopt;
}

std::optional<std::string> readLabel(std::string_view answer) {
    const auto object = objectIn(answer);
    const auto label = object ? textOf(*object, "label", longestEntry) : std::nullopt;
    if (!label)
        return std::nullopt;
    if (*label == "none")
        return std::string();
    const auto known = labels();
    return std::find(known.begin(), known.end(), *label) == known.end() ? std::nullopt : label;
}

} // namespace lorvane::backend
