// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Localisation.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace lorvane {

Result<Localisation, QString> Localisation::fromJson(const QByteArray& table) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(table, &error);
    if (!document.isObject()) {
        return failure(error.error == QJsonParseError::NoError ? QStringLiteral("not a JSON object")
                                                               : error.errorString());
    }
    Localisation result;
    const QJsonObject object = document.object();
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        if (!entry.value().isString()) {
            return failure(QStringLiteral("the entry \"%1\" is no text").arg(entry.key()));
        }
        result.table_.insert(entry.key(), entry.value().toString());
    }
    return result;
}

QString Localisation::chooseLanguage(const QStringList& override, const QStringList& system,
                                     const QStringList& available) {
    for (const QString& wanted : override + system) {
        QString code = QString(wanted).replace(u'_', u'-').section(u'-', 0, 0).toLower();
        if (available.contains(code)) {
            return code;
        }
    }
    return QStringLiteral("en");
}

} // namespace lorvane
