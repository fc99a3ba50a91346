// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/UnsentTakes.h"

#include "app/Stores.h"
#include "base/Dates.h"
#include "base/PreferenceCatalogue.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <sys/file.h>

namespace lorvane {

namespace {

const auto audioKey = QStringLiteral("audio");
const auto extKey = QStringLiteral("ext");
const auto prefixKey = QStringLiteral("prefix");
const auto secondsKey = QStringLiteral("seconds");
const auto takeKey = QStringLiteral("takeID");
const auto createdKey = QStringLiteral("createdAt");

/// The history gathers its changes for a moment before it writes them; only then may the take go.
constexpr Duration untilWritten = std::chrono::milliseconds(500);

double inUnixSeconds(WallTime time) { return inSeconds(time.time_since_epoch()); }

/// A file that no other process has in hand, and that is still there: whoever had it may have delivered it.
bool claim(QFile& file) {
    if (!file.open(QIODevice::ReadOnly) || flock(file.handle(), LOCK_EX | LOCK_NB) != 0) {
        return false;
    }
    return file.exists();
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
    // Each time it is sent it is the same take to the backend, which so counts it once.
    const QString takeID = take.takeID.isEmpty() ? newUuid() : take.takeID;
    QJsonObject kept{
        {takeKey, takeID}, {prefixKey, take.prefix}, {secondsKey, take.seconds}, {createdKey, now}};
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
    for (const QString& name : waiting) {
        QFile file(folder_ + QLatin1Char('/') + name);
        if (!claim(file)) {
            continue;
        }
        const QJsonObject kept = QJsonDocument::fromJson(file.readAll()).object();
        bool isOver = kept.isEmpty(); // it is no take
        if (!isOver) {
            isOver = co_await deliverOne(kept, endpoints, journal, scope);
        }
        if (isOver) {
            QFile::remove(file.fileName()); // while it is still ours
        }
    }
}

QCoro::Task<bool> UnsentTakes::deliverOne(QJsonObject kept, DictationEndpoints& endpoints,
                                          TakeJournal& journal, TaskScope scope) const {
    const QString language = foundation_.preferences.get(preference::translateLang).trimmed();
    DictationRequest request;
    request.audio = QByteArray::fromBase64(kept.value(audioKey).toString().toLatin1());
    request.ext = kept.value(extKey).toString(QStringLiteral("wav"));
    request.prefix = kept.value(prefixKey).toString();
    request.takeID = kept.value(takeKey).toString(newUuid());
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
        journal.add(deliveredFrom(kept, text, *result));
        co_await sleep(foundation_.clock, untilWritten, scope);
        foundation_.log.diagLog(
            QStringLiteral("[tirra-dictate] the text of a take of before is in the history"));
    }
    co_return true;
}

} // namespace lorvane
