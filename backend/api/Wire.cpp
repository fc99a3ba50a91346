// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Wire.h"

#include <boost/json.hpp>

namespace lorvane::backend {

namespace json = boost::json;

namespace {

json::string_view view(std::string_view text) { return {text.data(), text.size()}; }

bool isHex(char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F'); }

bool isUuid(std::string_view text) {
    if (text.size() != 36)
        return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool dash = i == 8 || i == 13 || i == 18 || i == 23;
        if (dash ? text[i] != '-' : !isHex(text[i]))
            return false;
    }
    return true;
}

json::object withDictated(json::object object, const Dictated& dictated,
                          const std::optional<DailyGoal>& goal) {
    object["text"] = view(dictated.text);
    object["raw"] = view(dictated.raw);
    if (!dictated.original.empty())
        object["original"] = view(dictated.original);
    if (!dictated.category.empty())
        object["category"] = view(dictated.category);
    if (goal)
        object["goal"] = {{"phoneWords", goal->phoneWords},
                          {"goal", goal->goal},
                          {"met", goal->met},
                          {"streak", goal->streak}};
    return object;
}

} // namespace

std::string errorBody(std::string_view code) { return json::serialize(json::object{{"error", view(code)}}); }
std::string tokenBody(std::string_view token) {
    return json::serialize(json::object{{"token", view(token)}});
}
std::string textBody(std::string_view text) { return json::serialize(json::object{{"text", view(text)}}); }

std::string_view codeOfStatus(int status) {
    switch (status) {
    case 401:
        return "unauthorized";
    case 404:
        return "not_found";
    case 405:
        return "method_not_allowed";
    case 413:
        return "too_large";
    case 503:
        return "busy";
    default:
        return "bad_request";
    }
}

std::string codeBody(std::string_view code) { return json::serialize(json::object{{"code", view(code)}}); }
std::string summaryBody(std::string_view summary) {
    return json::serialize(json::object{{"summary", view(summary)}});
}
std::string badBody(std::string_view reason) { return reasonBody("bad_request", reason); }

std::string reasonBody(std::string_view code, std::string_view reason) {
    return json::serialize(json::object{{"error", view(code)}, {"reason", view(reason)}});
}

std::string insightsBody(const Insights& insights) {
    json::array strengths;
    for (const auto& strength : insights.strengths)
        strengths.emplace_back(view(strength));
    json::array suggestions;
    for (const auto& suggestion : insights.suggestions)
        suggestions.push_back({{"title", view(suggestion.title)}, {"detail", view(suggestion.detail)}});
    json::array resources;
    for (const auto& resource : insights.resources)
        resources.push_back({{"title", view(resource.title)}, {"why", view(resource.why)}});
    return json::serialize(json::object{{"summary", view(insights.summary)},
                                        {"strengths", std::move(strengths)},
                                        {"suggestions", std::move(suggestions)},
                                        {"resources", std::move(resources)}});
}

std::string dictatedBody(const Dictated& dictated, const std::optional<DailyGoal>& goal) {
    return json::serialize(withDictated({}, dictated, goal));
}

std::string deltaLine(std::string_view text) {
    return json::serialize(json::object{{"type", "delta"}, {"text", view(text)}});
}

std::string doneLine(const Dictated& dictated, const std::optional<DailyGoal>& goal) {
    return json::serialize(withDictated({{"type", "done"}}, dictated, goal));
}

std::string errorLine(std::string_view code) {
    return json::serialize(json::object{{"type", "error"}, {"error", view(code)}});
}

std::string pingLine() { return R"({"type":"ping"})"; }

ErrorMeaning meaningOf(DictationError error) {
    switch (error) {
    case DictationError::badAudio:
        return {400, "bad_audio"};
    case DictationError::tooLong:
        return {413, "too_long"};
    case DictationError::languageUnavailable:
        return {501, "language_unavailable"};
    case DictationError::noSpeech:
        return {422, "no_speech"};
    case DictationError::stopped:
        return {503, "stopped"};
    case DictationError::busy:
        return {503, "busy"};
    case DictationError::engineFailed:
        break;
    }
    return {500, "engine_failed"};
}

std::optional<std::string> readDevice(std::string_view body) {
    json::error_code error;
    const auto value = json::parse(view(body), error);
    if (error || !value.is_object())
        return std::nullopt;
    const auto* entry = value.as_object().if_contains("device");
    if (!entry || !entry->is_string())
        return std::nullopt;
    std::string device(entry->as_string().data(), entry->as_string().size());
    for (char& c : device)
        if (c >= 'a' && c <= 'f')
            c = static_cast<char>(c - 'a' + 'A');
    if (!isUuid(device))
        return std::nullopt;
    return device;
}

} // namespace lorvane::backend
