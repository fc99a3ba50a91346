// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/Transcript.h"

#include <boost/json.hpp>

namespace lorvane::backend {

std::string onOneLine(std::string_view text) {
    std::string out;
    bool blank = false;
    for (const char c : text) {
        const bool space = c == ' ' || c == '\n' || c == '\r' || c == '\t';
        if (!space && blank && !out.empty())
            out += ' ';
        blank = space;
        if (!space)
            out += c;
    }
    return out;
}

std::optional<std::string> transcriptOf(std::string_view answer) {
    boost::json::error_code error;
    const auto value = boost::json::parse({answer.data(), answer.size()}, error);
    if (error || !value.is_object())
        return std::nullopt;
    const auto* text = value.as_object().if_contains("text");
    if (!text || !text->is_string())
        return std::nullopt;
    return onOneLine({text->as_string().data(), text->as_string().size()});
}

} // namespace lorvane::backend
