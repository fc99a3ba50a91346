// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/EndpointURLs.h"
#include "api/HttpClient.h"
#include "api/IdentityCloud.h"
#include "api/SecretStore.h"
#include "base/Preferences.h"

#include <optional>

namespace lorvane {

/// Who this device is to the backend: its identifier, kept twice so that each copy restores the other, and
/// the bearer token that a registration gives for it. Main thread.
class Registration {
 public:
    Registration(HttpClient& http, SecretStore& secrets, Preferences& preferences, IdentityCloud& cloud,
                 const EndpointURLs& urls)
        : http_(http), secrets_(secrets), preferences_(preferences), cloud_(cloud), urls_(urls) {}

    /// Makes sure of a token if it can; never fails, see `lastFailure`.
    QCoro::Task<void> registerDevice(TaskScope scope);
    /// The upper-case identifier of this device; made when there is none.
    QCoro::Task<QString> deviceID(TaskScope scope);
    /// The backend does not know the token any more: forgets it everywhere and registers anew.
    QCoro::Task<void> replaceRejectedToken(TaskScope scope);

    /// Read at the moment of use and never kept. Empty: none.
    [[nodiscard]] QString token() const;
    /// Why the last registration that reached for the network gave no token.
    [[nodiscard]] std::optional<RegistrationFailure> lastFailure() const { return lastFailure_; }

 private:
    void take(const Result<HttpResponse, TransportError>& answer);

    HttpClient& http_;
    SecretStore& secrets_;
    Preferences& preferences_;
    IdentityCloud& cloud_;
    const EndpointURLs& urls_;
    std::optional<RegistrationFailure> lastFailure_;
};

} // namespace lorvane
