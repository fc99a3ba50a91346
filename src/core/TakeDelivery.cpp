// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/TakeDelivery.h"

#include "base/Dates.h"
#include "base/PreferenceCatalogue.h"
#include "core/WordCount.h"

namespace lorvane {

namespace {

constexpr int lastAttempt = 2;
constexpr double retryStep = 1.2;
constexpr Duration tooLongShown = std::chrono::seconds(6);

bool isBlank(QChar character) { return character == u'\t' || character.category() == QChar::Separator_Space; }

/// Without blanks at both ends; line ends are no blanks.
QString trimmedBlanks(const QString& text) {
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && isBlank(text[begin])) {
        ++begin;
    }
    while (end > begin && isBlank(text[end - 1])) {
        --end;
    }
    return text.mid(begin, end - begin);
}

bool isServerFailure(const DictationError& error) {
    const auto* const failure = std::get_if<Failure>(&error);
    return failure != nullptr && failure->kind == Failure::Kind::server;
}

} // namespace

TakeDelivery::TakeDelivery(const Foundation& foundation, DictationEndpoints& endpoints,
                           DictationStatus& status, TextLanding& landing, TakeJournal& journal,
                           Workspace& workspace)
    : foundation_(foundation), endpoints_(endpoints), status_(status), landing_(landing), journal_(journal),
      workspace_(workspace) {}

QCoro::Task<void> TakeDelivery::deliverTake(FinishedTake take, int attempt, TaskScope scope) {
    const DictationRequest request = requestFor(take);
    take.takeID = request.takeID.value_or(QString());
    const auto own = std::make_shared<const FinishedTake>(take);
    underWay_ = own;
    status_.isTranslating.set(request.translate.has_value());
    co_await landing_.typing().armTyping(scope);
    const DictationResult result = co_await send(request, scope);
    if (result) {
        co_await succeed(*result, take.seconds, scope);
        co_return;
    }
    if (isServerFailure(result.error()) && attempt < lastAttempt) {
        foundation_.log.diagLog(QStringLiteral("[tirra-dictate] upload failed, retry %1").arg(attempt + 1));
        const Duration pause = seconds((attempt + 1) * retryStep);
        co_await sleep(foundation_.clock, pause, scope);
        co_await deliverTake(take, attempt + 1, scope);
        co_return;
    }
    if (!scope.isCancelled()) {
        fail(result.error());
    }
}

QCoro::Task<void> TakeDelivery::abandonTyping(QString reason, TaskScope scope) {
    underWay_.reset(); // nobody wants it any more, though a step of it may still run
    const bool clean = co_await landing_.typing().abandonTyping(reason, scope);
    static_cast<void>(clean); // nothing more can be done about it; the log has it
}

DictationRequest TakeDelivery::requestFor(const FinishedTake& take) {
    const QString language = trimmedBlanks(foundation_.preferences.get(preference::translateLang));
    DictationRequest request;
    request.audio = take.take ? take.take->data : QByteArray();
    request.ext = take.take ? take.take->ext : QStringLiteral("wav");
    if (!language.isEmpty()) {
        request.translate = language;
    }
    request.takeID = newUuid();
    request.prefix = take.prefix;
    request.allowRetry = true;
    return request;
}

QCoro::Task<DictationResult> TakeDelivery::send(DictationRequest request, TaskScope scope) {
    const DeltaConsumer onDelta = [this, scope](QString text) {
        return landing_.typing().typeLive(std::move(text), scope);
    };
    DictationResult result = co_await endpoints_.dictateStream(request, onDelta, scope);
    if (result) {
        co_return result;
    }
    const auto* const broken = std::get_if<TransportError>(&result.error());
    if (broken == nullptr || scope.isCancelled()) {
        co_return result;
    }
    foundation_.log.diagLog(
        QStringLiteral("[tirra-dictate] stream dropped, falling back: %1").arg(broken->description));
    DictationResult whole = co_await endpoints_.dictate(request, scope);
    co_return whole;
}

QCoro::Task<void> TakeDelivery::succeed(DictationResponse response, double seconds, TaskScope scope) {
    if (scope.isCancelled()) {
        co_return;
    }
    if (response.goal) {
        journal_.setGoalStreak(response.goal->streak);
    }
    const QString text = response.text.trimmed();
    if (text.isEmpty()) {
        status_.showNotice(foundation_.words.text("Didn't catch that"), NoticeSeverity::warning);
        co_return;
    }
    status_.lastText.set(text);
    const auto front = workspace_.frontmostApplication();
    const QString application = front ? front->localizedName : QString();
    co_await landing_.land(text, scope);
    record(text, response, seconds, application);
}

void TakeDelivery::fail(const DictationError& error) {
    const auto* const failure = std::get_if<Failure>(&error);
    QString message = failure == nullptr ? QString() : errorDescription(*failure, foundation_.words);
    if (message.isEmpty()) {
        message = foundation_.words.text("Try again");
    }
    const bool noSpeech = failure != nullptr && failure->kind == Failure::Kind::noSpeech;
    const bool tooLong = failure != nullptr && failure->kind == Failure::Kind::tooLong;
    status_.showNotice(message, noSpeech ? NoticeSeverity::warning : NoticeSeverity::error,
                       tooLong ? tooLongShown : briefly);
}

void TakeDelivery::record(const QString& text, const DictationResponse& response, double seconds,
                          const QString& application) {
    DeliveredTake taken;
    taken.id = newUuid();
    taken.text = text;
    taken.raw = response.raw;
    taken.createdAt = foundation_.clock.wallNow();
    taken.category = response.category;
    taken.durationSec = seconds;
    taken.device = QStringLiteral("mac");
    journal_.add(taken);
    journal_.recordHit(application, wordCount(text));
}

} // namespace lorvane
