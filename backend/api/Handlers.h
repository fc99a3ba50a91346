// SPDX-License-Identifier: GPL-3.0-or-later
// One function a route; the table in Routes.cpp says which. A BadBody that a handler throws is answered 400,
// a StorageError 503.
#pragma once

#include "api/Http.h"
#include "api/Services.h"

namespace lorvane::backend {

// TakeHandlers.cpp
void handleDictate(const Services& services, const Request& request, Exchange& exchange);
void handleDictateStream(const Services& services, const Request& request, Exchange& exchange);
void handleTranscribePart(const Services& services, const Request& request, Exchange& exchange);

// AccountHandlers.cpp
void handleRegister(const Services& services, const Request& request, Exchange& exchange);
void handleOnboarded(const Services& services, const Request& request, Exchange& exchange);
void handleLink(const Services& services, const Request& request, Exchange& exchange);
void handleReferral(const Services& services, const Request& request, Exchange& exchange);
std::optional<Response> recallReferral(const Services& services, const Request& request);

// MailHandlers.cpp
void handleInvite(const Services& services, const Request& request, Exchange& exchange);
void handleFeedback(const Services& services, const Request& request, Exchange& exchange);

// TextHandlers.cpp
void handleInsights(const Services& services, const Request& request, Exchange& exchange);
void handleSummary(const Services& services, const Request& request, Exchange& exchange);
void handleTranslate(const Services& services, const Request& request, Exchange& exchange);

// SiteHandlers.cpp
void handleGet(const Services& services, const Request& request, Exchange& exchange);
void handleAppcast(const Services& services, const Request& request, Exchange& exchange);
void handleHealth(const Services& services, const Request& request, Exchange& exchange);
std::optional<Response> instantHealth(const Services& services, const Request& request);
void handleReady(const Services& services, const Request& request, Exchange& exchange);
void handleMetrics(const Services& services, const Request& request, Exchange& exchange);

// Common to them.
void refuse(Exchange& exchange, int status, std::string_view code);
inline constexpr const char* agreedBody = R"({"status":"ok"})"; // nothing more to tell
void agree(Exchange& exchange);
// False, and answered 429, when the person has done so too often. A store that is away lets everybody in.
bool admitted(const Services& services, const Request& request, Exchange& exchange, std::string_view bucket,
              const Rate& rate);
// The person's code, made when there is none yet.
std::string referralCodeOf(Storage& storage, DeviceId device);

} // namespace lorvane::backend
