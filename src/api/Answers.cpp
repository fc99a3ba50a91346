// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Answers.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <limits>

namespace lorvane {

namespace {

/// Reads keys one by one and remembers whether any was of the wrong type or missing though required.
class Reader {
 public:
    explicit Reader(QJsonObject object) : object_(std::move(object)) {}

    [[nodiscard]] bool good() const { return good_; }

    std::optional<QString> optionalText(QLatin1String key) {
        const QJsonValue value = object_.value(key);
        if (value.isUndefined() || value.isNull()) {
            return std::nullopt;
        }
        good_ = good_ && value.isString();
        return value.toString();
    }

    QString text(QLatin1String key) {
        const QJsonValue value = object_.value(key);
        good_ = good_ && value.isString();
        return value.toString();
    }

    int integer(QLatin1String key) {
        const QJsonValue value = object_.value(key);
        const double number = value.toDouble(std::numeric_limits<double>::quiet_NaN());
        const bool whole = number >= std::numeric_limits<int>::min() &&
                           number <= std::numeric_limits<int>::max() && number == std::floor(number);
        good_ = good_ && whole;
        return whole ? static_cast<int>(number) : 0;
    }

    bool flag(QLatin1String key) {
        const QJsonValue value = object_.value(key);
        good_ = good_ && value.isBool();
        return value.toBool();
    }

    std::optional<DailyGoal> optionalGoal(QLatin1String key) {
        const QJsonValue value = object_.value(key);
        if (value.isUndefined() || value.isNull()) {
            return std::nullopt;
        }
        Reader inner(value.toObject());
        const DailyGoal goal{inner.integer(QLatin1String("phoneWords")), inner.integer(QLatin1String("goal")),
                             inner.flag(QLatin1String("met")), inner.integer(QLatin1String("streak"))};
        good_ = good_ && inner.good();
        return goal;
    }

 private:
    QJsonObject object_;
    bool good_ = true;
};

std::optional<QJsonObject> parseObject(const QByteArray& json) {
    const QJsonDocument document = QJsonDocument::fromJson(json);
    return document.isObject() ? std::optional(document.object()) : std::nullopt;
}

} // namespace

std::optional<StreamLine> decodeStreamLine(const QByteArray& json) {
    const auto object = parseObject(json);
    if (!object) {
        return std::nullopt;
    }
    Reader reader(*object);
    StreamLine line;
    line.type = reader.text(QLatin1String("type"));
    line.text = reader.optionalText(QLatin1String("text"));
    line.raw = reader.optionalText(QLatin1String("raw"));
    line.category = reader.optionalText(QLatin1String("category"));
    line.original = reader.optionalText(QLatin1String("original"));
    line.error = reader.optionalText(QLatin1String("error"));
    line.heard = reader.optionalText(QLatin1String("heard"));
    line.goal = reader.optionalGoal(QLatin1String("goal"));
    return reader.good() ? std::optional(line) : std::nullopt;
}

std::optional<DictationResponse> decodeResponse(const QByteArray& json) {
    const auto object = parseObject(json);
    if (!object) {
        return std::nullopt;
    }
    Reader reader(*object);
    DictationResponse response;
    response.text = reader.text(QLatin1String("text"));
    response.raw = reader.text(QLatin1String("raw"));
    response.original = reader.optionalText(QLatin1String("original"));
    response.category = reader.optionalText(QLatin1String("category"));
    response.goal = reader.optionalGoal(QLatin1String("goal"));
    return reader.good() ? std::optional(response) : std::nullopt;
}

std::optional<QString> decodePart(const QByteArray& json) {
    const auto object = parseObject(json);
    const QJsonValue text = object ? object->value(QLatin1String("text")) : QJsonValue();
    return text.isString() ? std::optional(text.toString()) : std::nullopt;
}

std::optional<QString> decodeToken(const QByteArray& json) {
    const auto object = parseObject(json);
    if (!object || !object->contains(QLatin1String("token"))) {
        return std::nullopt;
    }
    const bool onlyTexts =
        std::all_of(object->begin(), object->end(), [](const QJsonValue& value) { return value.isString(); });
    return onlyTexts ? std::optional(object->value(QLatin1String("token")).toString()) : std::nullopt;
}

} // namespace lorvane
