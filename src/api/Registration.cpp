// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Registration.h"

#include "api/Answers.h"
#include "base/Dates.h"
#include "base/PreferenceCatalogue.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace lorvane {

namespace {

constexpr Duration restoreTimeout = seconds(5);

QString secretService() { return QStringLiteral("com.ostrand.tirra.mac.device"); }
QString secretAccount() { return QStringLiteral("install-id"); }

// Only text that is not empty counts.
QString identifierIn(const std::optional<QByteArray>& secret) {
    const QByteArray bytes = secret.value_or(QByteArray());
    return bytes.isValidUtf8() ? QString::fromUtf8(bytes) : QString();
}

HttpRequest registrationRequest(const QUrl& url, const QString& device) {
    const QJsonObject body{{QStringLiteral("device"), device}};
    return {"POST",
            url,
            {{"X-Tirra-Platform", "mac"}, {"Content-Type", "application/json"}},
            QJsonDocument(body).toJson(QJsonDocument::Compact),
            requestTimeout::registration};
}

} // namespace

QString Registration::token() const { return preferences_.get(preference::token); }

QCoro::Task<QString> Registration::deviceID(TaskScope scope) {
    const auto secret = co_await secrets_.read(secretService(), secretAccount(), scope);
    const QString kept = identifierIn(secret);
    if (!kept.isEmpty()) {
        if (preferences_.get(preference::device) != kept) {
            preferences_.set(preference::device, kept);
        }
        co_return kept;
    }
    QString identifier = preferences_.get(preference::device);
    if (identifier.isEmpty()) {
        identifier = newUuid();
    }
    QByteArray value = identifier.toUtf8();
    co_await secrets_.write(secretService(), secretAccount(), value, scope);
    preferences_.set(preference::device, identifier);
    co_return identifier;
}

QCoro::Task<void> Registration::registerDevice(TaskScope scope) {
    if (!token().isEmpty()) {
        co_return;
    }
    if (preferences_.get(preference::icloudSync)) {
        co_await cloud_.restoreIdentity(restoreTimeout, scope);
    }
    if (!token().isEmpty()) {
        co_return;
    }
    const QString device = co_await deviceID(scope);
    HttpRequest request = registrationRequest(urls_.registerURL, device);
    const auto answer = co_await http_.send(std::move(request), scope);
    take(answer);
}

void Registration::take(const Result<HttpResponse, TransportError>& answer) {
    const int status = answer ? answer->status : 0;
    if (status == 503) {
        lastFailure_ = RegistrationFailure::busy;
        return;
    }
    if (status >= 400 && status <= 499) {
        lastFailure_ = RegistrationFailure::refused;
        return;
    }
    const auto given = status == 200 ? decodeToken(answer->body) : std::nullopt;
    if (!given) {
        lastFailure_ = RegistrationFailure::offline;
        return;
    }
    preferences_.set(preference::token, *given);
    lastFailure_.reset();
}

QCoro::Task<void> Registration::replaceRejectedToken(TaskScope scope) {
    QString rejected = token();
    preferences_.set(preference::token, QString(""));
    if (preferences_.get(preference::icloudSync)) {
        co_await cloud_.retireIdentity(rejected, scope);
    }
    co_await registerDevice(scope);
}

} // namespace lorvane
