// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/testing/FakeHttpClient.h"

#include <algorithm>
#include <iterator>

namespace lorvane {

namespace {

class FakeLineStream final : public HttpLineStream {
 public:
    FakeLineStream(FakeReply reply, Duration timeout, Clock& clock, FakeHttpClient& owner)
        : reply_(std::move(reply)), timeout_(timeout), clock_(clock), owner_(owner) {
        ++owner_.openStreams;
    }
    FakeLineStream(const FakeLineStream&) = delete;
    FakeLineStream& operator=(const FakeLineStream&) = delete;
    ~FakeLineStream() override { --owner_.openStreams; }

    [[nodiscard]] int status() const override { return reply_.status; }

    QCoro::Task<Result<std::optional<QByteArray>, TransportError>> nextLine(TaskScope scope) override {
        const Duration wait = std::min(reply_.lineDelay, timeout_);
        if (wait > Duration::zero()) {
            co_await sleep(clock_, wait, scope);
        }
        if (reply_.lineDelay >= timeout_) {
            co_return failure(TransportError{QStringLiteral("the request timed out")});
        }
        const qsizetype end = reply_.body.indexOf('\n', position_);
        const bool whole = end >= 0 || !reply_.breaksWith;
        if (position_ >= reply_.body.size() || !whole) {
            co_return atEnd();
        }
        QByteArray line = reply_.body.mid(position_, end < 0 ? -1 : end - position_);
        position_ = end < 0 ? reply_.body.size() : end + 1;
        if (line.endsWith('\r')) {
            line.chop(1);
        }
        ++owner_.linesRead;
        co_return std::optional(line);
    }

 private:
    [[nodiscard]] Result<std::optional<QByteArray>, TransportError> atEnd() const {
        if (reply_.breaksWith) {
            return failure(*reply_.breaksWith);
        }
        return std::optional<QByteArray>();
    }

    FakeReply reply_;
    Duration timeout_;
    Clock& clock_;
    FakeHttpClient& owner_;
    qsizetype position_ = 0;
};

} // namespace

QCoro::Task<Result<HttpResponse, TransportError>> FakeHttpClient::send(HttpRequest request, TaskScope scope) {
    auto reply = co_await play(std::move(request), scope);
    if (!reply) {
        co_return failure(std::move(reply.error()));
    }
    if (reply->breaksWith) {
        co_return failure(*reply->breaksWith);
    }
    co_return HttpResponse{reply->status, reply->body};
}

QCoro::Task<Result<std::unique_ptr<HttpLineStream>, TransportError>> FakeHttpClient::open(HttpRequest request,
                                                                                          TaskScope scope) {
    const Duration timeout = request.timeout;
    auto reply = co_await play(std::move(request), scope);
    if (!reply) {
        co_return failure(std::move(reply.error()));
    }
    std::unique_ptr<HttpLineStream> stream =
        std::make_unique<FakeLineStream>(std::move(*reply), timeout, clock_, *this);
    co_return std::move(stream);
}

std::vector<HttpRequest> FakeHttpClient::requestsTo(const QString& path) const {
    std::vector<HttpRequest> found;
    std::copy_if(requests.begin(), requests.end(), std::back_inserter(found),
                 [&path](const HttpRequest& request) { return request.url.path() == path; });
    return found;
}

QCoro::Task<Result<FakeReply, TransportError>> FakeHttpClient::play(HttpRequest request, TaskScope scope) {
    if (!request.url.isValid() || request.url.host().isEmpty()) {
        co_return failure(TransportError{QStringLiteral("no address")});
    }
    requests.push_back(request);
    if (onRequest) {
        onRequest(request);
    }
    FakeReply reply = next(request.url.path());
    const Duration wait = std::min(reply.delay, request.timeout);
    if (wait > Duration::zero()) {
        co_await sleep(clock_, wait, scope);
    }
    if (reply.delay >= request.timeout) {
        co_return failure(TransportError{QStringLiteral("the request timed out")});
    }
    if (reply.failsWith) {
        co_return failure(*reply.failsWith);
    }
    co_return reply;
}

FakeReply FakeHttpClient::next(const QString& path) {
    auto& script = scripts_[path];
    if (script.empty()) {
        return {.status = 404, .body = {}};
    }
    FakeReply reply = script.front();
    if (script.size() > 1) {
        script.pop_front();
    }
    return reply;
}

std::optional<QByteArray> header(const HttpRequest& request, const QByteArray& name) {
    for (const auto& [key, value] : request.headers) {
        if (key.compare(name, Qt::CaseInsensitive) == 0) {
            return value;
        }
    }
    return std::nullopt;
}

} // namespace lorvane
