// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/Answers.h"
#include "api/DictationEndpoints.h"
#include "api/EndpointURLs.h"
#include "api/Registration.h"

namespace lorvane {

/// The one client of the backend. Main thread.
class MacAPI final : public DictationEndpoints {
 public:
    MacAPI(HttpClient& http, SecretStore& secrets, Preferences& preferences, IdentityCloud& cloud);
    MacAPI(const MacAPI&) = delete;
    MacAPI& operator=(const MacAPI&) = delete;

    /// May come late and may change: a bundled backend says its port only once it runs. Until then every
    /// request fails in transport.
    void setBackendURL(const QUrl& base) { urls_ = endpointURLs(base); }
    [[nodiscard]] const EndpointURLs& urls() const { return urls_; }

    QCoro::Task<void> registerDevice(TaskScope scope) { return registration_.registerDevice(scope); }
    QCoro::Task<QString> deviceID(TaskScope scope) { return registration_.deviceID(scope); }
    [[nodiscard]] std::optional<RegistrationFailure> lastRegistrationFailure() const {
        return registration_.lastFailure();
    }

    QCoro::Task<DictationResult> dictateStream(DictationRequest request, DeltaConsumer onDelta,
                                               TaskScope scope) override;
    QCoro::Task<DictationResult> dictate(DictationRequest request, TaskScope scope) override;
    QCoro::Task<std::optional<QString>> transcribePart(QByteArray audio, QString ext, QString context,
                                                       TaskScope scope) override;

 private:
    QCoro::Task<bool> obtainToken(TaskScope scope);
    [[nodiscard]] HttpRequest audioRequest(const QUrl& url, Duration timeout) const;
    [[nodiscard]] HttpRequest takeRequest(const QUrl& url, const DictationRequest& take) const;
    [[nodiscard]] DictationResult noToken() const;

    HttpClient& http_;
    Preferences& preferences_;
    EndpointURLs urls_;
    Registration registration_;
};

} // namespace lorvane
