// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/TakeBody.h"

#include "base/PreferenceCatalogue.h"

#include <QJsonDocument>
#include <QTextBoundaryFinder>
#include <QtEndian>

#include <limits>

namespace lorvane {

namespace {

constexpr qsizetype characterLimit = 600;
constexpr qsizetype shortestLanguage = 2;

const QStringList& languages() {
    static const QStringList list =
        QStringLiteral(
            "af am ar hy as ast az be bn bs bg my yue ca ceb ny hr cs da nl en et fil fi fr ff gl lg ka "
            "de el gu ha he hi hu is ig id ga it ja jv kea kn kk km ko ku ky lo lv ln lt luo lb mk ms "
            "ml mt zh mi mr mn ne nso no oc or ps fa pl pt pa ro ru sr sn sd sk sl so es sw sv ta tg te "
            "th tr uk umb ur uz vi cy wo xh yo zu")
            .split(u' ');
    return list;
}

// Characters as a reader counts them: a letter with its accents, or an emoji of several code points, is one
// and is never cut apart.
QString firstCharacters(const QString& text, qsizetype count) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    for (qsizetype i = 0; i < count; ++i) {
        if (finder.toNextBoundary() < 0) {
            return text;
        }
    }
    return text.left(finder.position());
}

QString lastCharacters(const QString& text, qsizetype count) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    finder.toEnd();
    for (qsizetype i = 0; i < count; ++i) {
        if (finder.toPreviousBoundary() < 0) {
            return text;
        }
    }
    return text.mid(finder.position());
}

bool hasCharacters(const QString& text, qsizetype count) { return firstCharacters(text, count - 1) != text; }

QJsonObject commonFields(const QString& ext, const Preferences& preferences) {
    QJsonObject fields{{QStringLiteral("ext"), ext}};
    const QString language = preferences.get(preference::speakLang).toLower();
    if (languages().contains(language)) {
        fields.insert(QStringLiteral("lang"), language);
    }
    return fields;
}

QByteArray framed(const QByteArray& json, const QByteArray& audio) {
    QByteArray body(static_cast<qsizetype>(sizeof(quint32)), Qt::Uninitialized);
    body.reserve(body.size() + json.size() + audio.size());
    qToBigEndian(static_cast<quint32>(json.size()), body.data());
    return body.append(json).append(audio);
}

} // namespace

QJsonObject takeFields(const DictationRequest& request, const Preferences& preferences) {
    QJsonObject fields = commonFields(request.ext, preferences);
    if (request.translate && hasCharacters(*request.translate, shortestLanguage)) {
        fields.insert(QStringLiteral("translate"), *request.translate);
    }
    const QString style = firstCharacters(preferences.get(preference::style).trimmed(), characterLimit);
    if (!style.isEmpty()) {
        fields.insert(QStringLiteral("style"), style);
    }
    if (!request.prefix.isEmpty()) {
        fields.insert(QStringLiteral("prefix"), request.prefix);
    }
    return fields;
}

QJsonObject partFields(const QString& ext, const QString& context, const Preferences& preferences) {
    QJsonObject fields = commonFields(ext, preferences);
    if (!context.isEmpty()) {
        fields.insert(QStringLiteral("context"), lastCharacters(context, characterLimit));
    }
    return fields;
}

std::optional<QByteArray> compactJson(const QJsonObject& object) {
    QByteArray json = QJsonDocument(object).toJson(QJsonDocument::Compact);
    if (static_cast<quint64>(json.size()) > std::numeric_limits<quint32>::max()) {
        return std::nullopt;
    }
    return json;
}

void attachTake(HttpRequest& request, QJsonObject fields, const QByteArray& audio, const JsonWriter& write) {
    if (const auto json = write(fields)) {
        request.headers.emplace_back("Content-Type", "application/vnd.tirra.take");
        request.body = framed(*json, audio);
        return;
    }
    request.headers.emplace_back("Content-Type", "application/json");
    fields.insert(QStringLiteral("audio"), QString::fromLatin1(audio.toBase64()));
    request.body = write(fields).value_or(QByteArray());
}

} // namespace lorvane
