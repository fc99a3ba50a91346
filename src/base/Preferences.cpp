// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Preferences.h"

#include <cmath>
#include <limits>

namespace lorvane::detail {

std::optional<QString> fromJson(const QJsonValue& value, const QString&) {
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

std::optional<bool> fromJson(const QJsonValue& value, bool) {
    return value.isBool() ? std::optional(value.toBool()) : std::nullopt;
}

std::optional<int> fromJson(const QJsonValue& value, int) {
    const double number = value.toDouble(std::numeric_limits<double>::quiet_NaN());
    if (!(number >= std::numeric_limits<int>::min() && number <= std::numeric_limits<int>::max())) {
        return std::nullopt;
    }
    return static_cast<int>(number);
}

std::optional<double> fromJson(const QJsonValue& value, double) {
    return value.isDouble() ? std::optional(value.toDouble()) : std::nullopt;
}

std::optional<QStringList> fromJson(const QJsonValue& value, const QStringList&) {
    if (!value.isArray()) {
        return std::nullopt;
    }
    QStringList list;
    const QJsonArray array = value.toArray();
    for (const auto& entry : array) {
        if (!entry.isString()) {
            return std::nullopt;
        }
        list.append(entry.toString());
    }
    return list;
}

std::optional<QByteArray> fromJson(const QJsonValue& value, const QByteArray&) {
    if (!value.isString()) {
        return std::nullopt;
    }
    const auto decoded =
        QByteArray::fromBase64Encoding(value.toString().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    return decoded ? std::optional(*decoded) : std::nullopt;
}

QJsonValue toJson(const QString& value) { return value; }
QJsonValue toJson(bool value) { return value; }
QJsonValue toJson(int value) { return value; }
QJsonValue toJson(double value) { return value; }
QJsonValue toJson(const QStringList& value) { return QJsonArray::fromStringList(value); }
QJsonValue toJson(const QByteArray& value) { return QString::fromLatin1(value.toBase64()); }

} // namespace lorvane::detail
