// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/HttpClient.h"
#include "base/Clock.h"
#include "base/Signal.h"

namespace lorvane {

/// Requests to a backend that is started again when it dies: a whole request that fails in transport waits,
/// at most three seconds, for the next start and goes out once more. A stream is not repeated, since its
/// reader has seen what came; takes carry an identifier, so none counts twice. Main thread.
class PatientHttpClient final : public HttpClient {
 public:
    static constexpr Duration patience = std::chrono::seconds(3);

    PatientHttpClient(HttpClient& http, Clock& clock) : http_(http), clock_(clock) {}

    /// The backend answers (again). `startsAgain`: whether it will be started again when it dies; nothing
    /// waits for one that will not.
    void backendStarted(bool startsAgain);

    QCoro::Task<Result<HttpResponse, TransportError>> send(HttpRequest request, TaskScope scope) override;
    QCoro::Task<Result<std::unique_ptr<HttpLineStream>, TransportError>> open(HttpRequest request,
                                                                              TaskScope scope) override;

 private:
    QCoro::Task<bool> startsAfter(int start, TaskScope scope);

    HttpClient& http_;
    Clock& clock_;
    bool startsAgain_ = false;
    int starts_ = 0;
    Signal<> started_;
};

} // namespace lorvane
