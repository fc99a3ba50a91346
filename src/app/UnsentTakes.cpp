// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/UnsentTakes.h"

#include "app/Stores.h"
#include "base/Dates.h"
#include "base/PreferenceCatalogue.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

namespace lorvane {

namespace {

const auto audioKey = QStringLiteral("audio");
const auto extKey = QStringLiteral("ext");
const auto prefixKey = QStringLiteral("prefix");
const auto secondsKey = QStringLiteral("seconds");
const auto createdKey = QStringLiteral("createdAt");

/// The history gathers its changes for a moment before it writes them; only then may the take go.
constexpr Duration untilWritten = std::chrono::milliseconds(500);

double inUnixSeconds(WallTime time) { return inSeconds(time.time_since_epoch()); }

/// Empty when the file is no take; absent when it cannot be read.
std::optional<QJsonObject> objectIn(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    return QJsonDocument::fromJson(file.readAll()).object();
}

DeliveredTake deliveredFrom(const QJsonObject& kept, const QString& text, const DictationResponse& response) {
    DeliveredTake taken;
    taken.id = newUuid();
    taken.text = text;
    taken.raw = response.raw;
    taken.createdAt = WallTime(seconds(kept.value(createdKey).toDouble()));
    taken.category = response.category;
    taken.durationSec = kept.value(secondsKey).toDouble();
    taken.device = QStringLiteral("mac");
    return taken;
}

} // namespace

QString UnsentTakes::standardFolder() { return dataFolder() + QStringLiteral("/unsent"); }

bool UnsentTakes::keep(const FinishedTake& take) const {
    if (take.isNothing() || !QDir().mkpath(folder_)) {
        return false;
    }
    const double now = inUnixSeconds(foundation_.clock.wallNow());
    QJsonObject kept{{prefixKey, take.prefix}, {secondsKey, take.seconds}, {createdKey, now}};
    if (take.take) {
        kept.insert(audioKey, QString::fromLatin1(take.take->data.toBase64()));
        kept.insert(extKey, take.take->ext);
    }
    QSaveFile file(folder_ + QStringLiteral("/%1.json").arg(now, 0, 'f', 3));
    if (!file.open(QIODevice::WriteOnly)) {
        return false;
    }
    file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    file.write(QJsonDocument(kept).toJson(QJsonDocument::Compact));
    return file.commit();
}

QStringList UnsentTakes::files() const {
    return QDir(folder_).entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name);
}

bool UnsentTakes::isEmpty() const { return files().isEmpty(); }

QCoro::Task<void> UnsentTakes::deliver(DictationEndpoints& endpoints, TakeJournal& journal,
                                       TaskScope scope) const {
    const QStringList waiting = files();
    for (const QString& file : waiting) {
        const bool isOver = co_await deliverOne(folder_ + QLatin1Char('/') + file, endpoints, journal, scope);
        if (isOver) {
            QFile::remove(folder_ + QLatin1Char('/') + file);
        }
    }
}

QCoro::Task<bool> UnsentTakes::deliverOne(QString file, DictationEndpoints& endpoints, TakeJournal& journal,
                                          TaskScope scope) const {
    const auto kept = objectIn(file);
    if (!kept || kept->isEmpty()) {
        co_return kept.has_value();
    }
    const QString language = foundation_.preferences.get(preference::translateLang).trimmed();
    DictationRequest request;
    request.audio = QByteArray::fromBase64(kept->value(audioKey).toString().toLatin1());
    request.ext = kept->value(extKey).toString(QStringLiteral("wav"));
    request.prefix = kept->value(prefixKey).toString();
    request.takeID = newUuid();
    request.allowRetry = true;
    if (!language.isEmpty()) {
        request.translate = language;
    }
    const DictationResult result = co_await endpoints.dictate(request, scope);
    if (!result) {
        foundation_.log.diagLog(QStringLiteral("[tirra-dictate] a take of before is not answered yet"));
        const auto* const failure = std::get_if<Failure>(&result.error());
        co_return failure != nullptr && failure->kind == Failure::Kind::noSpeech;
    }
    const QString text = result->text.trimmed();
    if (!text.isEmpty()) {
        journal.add(deliveredFrom(*kept, text, *result));
        co_await sleep(foundation_.clock, untilWritten, scope);
        foundation_.log.diagLog(
            QStringLiteral("[tirra-dictate] the text of a take of before is in the history"));
    }
    co_return true;
}

} // namespace lorvane
