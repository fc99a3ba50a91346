// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/PatientHttpClient.h"

namespace lorvane {

void PatientHttpClient::backendStarted(bool startsAgain) {
    startsAgain_ = startsAgain;
    ++starts_;
    started_.emit();
}

QCoro::Task<Result<HttpResponse, TransportError>> PatientHttpClient::send(HttpRequest request,
                                                                          TaskScope scope) {
    const int start = starts_;
    auto answer = co_await http_.send(request, scope);
    if (answer || !startsAgain_) {
        co_return answer;
    }
    const bool isBack = co_await startsAfter(start, scope);
    if (isBack) {
        answer = co_await http_.send(request, scope);
    }
    co_return answer;
}

QCoro::Task<Result<std::unique_ptr<HttpLineStream>, TransportError>>
PatientHttpClient::open(HttpRequest request, TaskScope scope) {
    auto stream = co_await http_.open(std::move(request), std::move(scope));
    co_return stream;
}

/// Whether it was started after the start of that number, or is within the patience.
QCoro::Task<bool> PatientHttpClient::startsAfter(int start, TaskScope scope) {
    if (starts_ != start) {
        co_return true;
    }
    const Completion<bool> answer;
    const Handle limit = clock_.after(patience, [answer] { answer.complete(false); });
    const Handle started = started_.subscribe([answer] { answer.complete(true); });
    co_return co_await answer.wait(scope);
}

} // namespace lorvane
