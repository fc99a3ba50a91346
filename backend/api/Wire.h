// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/Dictation.h"
#include "api/Goal.h"
#include "language/Insights.h"

#include <optional>
#include <string>
#include <string_view>

namespace lorvane::backend {

// The JSON that goes over the wire; lines come without their line end.

std::string errorBody(std::string_view code);
std::string_view codeOfStatus(int status); // of the refusals that come before any handler
std::string tokenBody(std::string_view token);
std::string textBody(std::string_view text);
std::string codeBody(std::string_view code);
std::string summaryBody(std::string_view summary);
std::string insightsBody(const Insights& insights);
std::string badBody(std::string_view reason);
std::string reasonBody(std::string_view code, std::string_view reason);
std::string dictatedBody(const Dictated& dictated, const std::optional<DailyGoal>& goal);

std::string deltaLine(std::string_view text);
std::string doneLine(const Dictated& dictated, const std::optional<DailyGoal>& goal);
std::string errorLine(std::string_view code);
std::string pingLine(); // says nothing but that the stream lives

struct ErrorMeaning {
    int status;
    std::string_view code;
};
ErrorMeaning meaningOf(DictationError error);

// The identifier of a registration body, in upper case; nothing when the body is not {"device": UUID}.
std::optional<std::string> readDevice(std::string_view body);

} // namespace lorvane::backend
