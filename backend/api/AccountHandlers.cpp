// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Handlers.h"
#include "api/JsonBody.h"
#include "api/Wire.h"
#include "storage/StorageError.h"

#include <algorithm>

namespace lorvane::backend {

namespace {

constexpr std::size_t longestSource = 64;
constexpr std::size_t longestToken = 256;
constexpr int codeAttempts = 20;
constexpr std::chrono::seconds codeRemembered{60};

bool isSourceSign(char c) {
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == ' ' || c == '-' || c == '_';
}

// First whoever asks by themselves, so that one who asks too often takes nothing from the others.
bool registrationAdmitted(const Services& services, const std::string& client) {
    const auto& limits = services.options.limits;
    auto& storage = services.storage;
    return storage.admitStranger("register", sha256(client), limits.registrationsOfAddress).count() == 0 &&
           storage.admit("register", 0, limits.registrations).count() == 0;
}

} // namespace

void handleRegister(const Services& services, const Request& request, Exchange& exchange) {
    const auto device = readDevice(request.body);
    if (!device)
        return refuse(exchange, 400, "bad_device");
    if (!registrationAdmitted(services, request.client))
        return refuse(exchange, 503, "busy");
    const auto token = newToken();
    services.storage.registerDevice(*device, sha256(token));
    exchange.respond({200, tokenBody(token)});
}

// A client that has no source to tell sends no body at all.
void handleOnboarded(const Services& services, const Request& request, Exchange& exchange) {
    std::string source;
    if (!request.body.empty())
        source = JsonBody(request.body).optionalText("source", longestSource).value_or("");
    if (!std::all_of(source.begin(), source.end(), &isSourceSign))
        throw BadBody("bad source");
    services.storage.keepOnboarded(request.device, source);
    agree(exchange);
}

// Who holds both tokens is both people.
void handleLink(const Services& services, const Request& request, Exchange& exchange) {
    const auto alias = JsonBody(request.body).text("alias", longestToken);
    if (services.storage.joinDevices(request.device, sha256(alias)) == Joined::unknownAlias)
        return refuse(exchange, 404, "unknown_alias");
    services.codes.forget(request.device);
    agree(exchange);
}

void handleReferral(const Services& services, const Request& request, Exchange& exchange) {
    const auto code = referralCodeOf(services.storage, request.device);
    services.codes.remember(request.device, code);
    exchange.respond({200, codeBody(code)});
}

// A code changes but once, when two people become one, and the former one stays good.
std::optional<Response> recallReferral(const Services& services, const Request& request) {
    const auto code = services.codes.recall(request.device, codeRemembered);
    return code ? std::optional(Response{200, codeBody(*code)}) : std::nullopt;
}

std::string referralCodeOf(Storage& storage, DeviceId device) {
    for (int attempt = 0; attempt < codeAttempts; ++attempt)
        if (auto code = storage.referralCode(device, newReadableCode()))
            return *code;
    throw StorageError("no free referral code was found");
}

} // namespace lorvane::backend
