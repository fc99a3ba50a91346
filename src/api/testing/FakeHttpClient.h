// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/HttpClient.h"
#include "base/Clock.h"

#include <deque>
#include <map>

namespace lorvane {

/// What the fake does with one request: it waits for `delay`, then fails in transport or answers. A stream
/// ends with `breaksWith` after its lines, or as a whole body. A delay as long as the request's time-out
/// fails as one.
struct FakeReply {
    int status = 200;
    QByteArray body = {};
    Duration delay = Duration::zero();
    std::optional<TransportError> failsWith = std::nullopt;
    std::optional<TransportError> breaksWith = std::nullopt;
    /// Before each line of a stream.
    Duration lineDelay = Duration::zero();
};

/// A server in memory: each path plays its script and repeats the last entry. A path without a script answers
/// 404, an invalid address fails in transport.
class FakeHttpClient final : public HttpClient {
 public:
    explicit FakeHttpClient(Clock& clock) : clock_(clock) {}

    QCoro::Task<Result<HttpResponse, TransportError>> send(HttpRequest request, TaskScope scope) override;
    QCoro::Task<Result<std::unique_ptr<HttpLineStream>, TransportError>> open(HttpRequest request,
                                                                              TaskScope scope) override;

    void answer(const QString& path, FakeReply reply) { scripts_[path].push_back(std::move(reply)); }
    [[nodiscard]] std::vector<HttpRequest> requestsTo(const QString& path) const;

    std::vector<HttpRequest> requests;
    /// What a request calls while it is under way, before its answer.
    std::function<void(const HttpRequest&)> onRequest;
    int openStreams = 0;
    int linesRead = 0;

 private:
    QCoro::Task<Result<FakeReply, TransportError>> play(HttpRequest request, TaskScope scope);
    FakeReply next(const QString& path);

    Clock& clock_;
    std::map<QString, std::deque<FakeReply>> scripts_;
};

/// The value of a header, compared without regard to case; nothing when it is not there.
[[nodiscard]] std::optional<QByteArray> header(const HttpRequest& request, const QByteArray& name);

} // namespace lorvane
