// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/MacAPI.h"

#include "api/TakeBody.h"

namespace lorvane {

namespace {

DictationResult fails(Failure::Kind kind, std::optional<RegistrationFailure> reason = std::nullopt) {
    return failure(DictationError(Failure{kind, reason}));
}

DictationResult fails(TransportError error) { return failure(DictationError(std::move(error))); }

DictationResult finished(const StreamLine& line) {
    return DictationResponse{line.text.value_or(QString()).trimmed(), line.raw.value_or(QString("")),
                             line.original, line.category, line.goal};
}

DictationResult refused(const StreamLine& line) {
    const QString reason = line.error.value_or(QString());
    if (reason == QLatin1String("no_speech")) {
        return fails(Failure::Kind::noSpeech);
    }
    if (reason == QLatin1String("dictate_limit")) {
        return fails(Failure::Kind::tooManyRequests);
    }
    if (reason == QLatin1String("unauthorized")) {
        return fails(Failure::Kind::noToken, RegistrationFailure::refused);
    }
    return fails(Failure::Kind::server);
}

DictationResult decoded(const QByteArray& body) {
    if (auto response = decodeResponse(body)) {
        return std::move(*response);
    }
    return fails(TransportError{QStringLiteral("the answer could not be decoded")});
}

DictationResult outcome(const HttpResponse& answer) {
    switch (answer.status) {
    case 200:
        return decoded(answer.body);
    case 413:
        return fails(Failure::Kind::tooLong);
    case 422:
        return fails(Failure::Kind::noSpeech);
    case 429:
        return fails(Failure::Kind::tooManyRequests);
    default:
        return fails(Failure::Kind::server);
    }
}

std::optional<StreamLine> streamLine(const QByteArray& line) {
    const QByteArray trimmed = QString::fromUtf8(line).trimmed().toUtf8();
    return trimmed.isEmpty() ? std::nullopt : decodeStreamLine(trimmed);
}

QCoro::Task<DictationResult> readLines(std::unique_ptr<HttpLineStream> stream, DeltaConsumer onDelta,
                                       TaskScope scope) {
    for (;;) {
        auto next = co_await stream->nextLine(scope);
        if (!next) {
            co_return fails(std::move(next.error()));
        }
        if (!*next) {
            co_return fails(TransportError{QStringLiteral("the network connection was lost")});
        }
        const auto line = streamLine(**next);
        if (!line) {
            continue;
        }
        if (line->type == QLatin1String("done")) {
            co_return finished(*line);
        }
        if (line->type == QLatin1String("error")) {
            co_return refused(*line);
        }
        const QString text = line->text.value_or(QString());
        if (line->type == QLatin1String("delta") && !text.isEmpty() && onDelta) {
            co_await onDelta(text);
        }
    }
}

} // namespace

MacAPI::MacAPI(HttpClient& http, SecretStore& secrets, Preferences& preferences, IdentityCloud& cloud)
    : http_(http), preferences_(preferences), registration_(http, secrets, preferences, cloud, urls_) {}

QCoro::Task<DictationResult> MacAPI::dictateStream(DictationRequest request, DeltaConsumer onDelta,
                                                   TaskScope scope) {
    const bool ready = co_await obtainToken(scope);
    if (!ready) {
        co_return noToken();
    }
    HttpRequest post = takeRequest(urls_.dictateStreamURL, request);
    auto opened = co_await http_.open(std::move(post), scope);
    if (!opened) {
        co_return fails(std::move(opened.error()));
    }
    std::unique_ptr<HttpLineStream> stream = std::move(*opened);
    if (stream->status() == 401 && request.allowRetry) {
        stream.reset();
        co_await registration_.replaceRejectedToken(scope);
        request.allowRetry = false;
        co_return co_await dictateStream(std::move(request), std::move(onDelta), scope);
    }
    if (stream->status() != 200) {
        co_return fails(stream->status() == 413 ? Failure::Kind::tooLong : Failure::Kind::server);
    }
    co_return co_await readLines(std::move(stream), std::move(onDelta), scope);
}

QCoro::Task<DictationResult> MacAPI::dictate(DictationRequest request, TaskScope scope) {
    const bool ready = co_await obtainToken(scope);
    if (!ready) {
        co_return noToken();
    }
    HttpRequest post = takeRequest(urls_.dictateURL, request);
    auto answer = co_await http_.send(std::move(post), scope);
    if (!answer) {
        co_return fails(std::move(answer.error()));
    }
    if (answer->status == 401 && request.allowRetry) {
        co_await registration_.replaceRejectedToken(scope);
        request.allowRetry = false;
        co_return co_await dictate(std::move(request), scope);
    }
    co_return outcome(*answer);
}

QCoro::Task<std::optional<QString>> MacAPI::transcribePart(QByteArray audio, QString ext, QString context,
                                                           TaskScope scope) {
    if (registration_.token().isEmpty()) {
        co_return std::nullopt;
    }
    HttpRequest post = audioRequest(urls_.transcribePartURL, requestTimeout::part);
    attachTake(post, partFields(ext, context, preferences_), audio);
    const auto answer = co_await http_.send(std::move(post), scope);
    if (!answer || answer->status != 200) {
        co_return std::nullopt;
    }
    co_return decodePart(answer->body);
}

QCoro::Task<bool> MacAPI::obtainToken(TaskScope scope) {
    if (registration_.token().isEmpty()) {
        co_await registration_.registerDevice(scope);
    }
    co_return !registration_.token().isEmpty();
}

HttpRequest MacAPI::audioRequest(const QUrl& url, Duration timeout) const {
    return {"POST",
            url,
            {{"Authorization", "Bearer " + registration_.token().toUtf8()}, {"X-Tirra-Platform", "mac"}},
            {},
            timeout};
}

HttpRequest MacAPI::takeRequest(const QUrl& url, const DictationRequest& take) const {
    HttpRequest post = audioRequest(url, requestTimeout::dictation);
    if (take.takeID) {
        post.headers.emplace_back("X-Tirra-Take", take.takeID->toUtf8());
    }
    attachTake(post, takeFields(take, preferences_), take.audio);
    return post;
}

DictationResult MacAPI::noToken() const { return fails(Failure::Kind::noToken, registration_.lastFailure()); }

} // namespace lorvane
